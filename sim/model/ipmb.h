/// Messages on the IPMB as Send Message and Get Message carry them (IPMI v2.0,
/// 22.6, 22.7; IPMB v1.0, 2.11).
#ifndef VEK_SIM_MODEL_IPMB_H
#define VEK_SIM_MODEL_IPMB_H

#include <optional>

#include "sim/model/message.h"

namespace Sim
{

struct IpmbMessage
{
    Request request;
    uint8_t requester = 0; ///< Whom the answer goes to,
    uint8_t sequence = 0;  ///< with this sequence number and LUN.
};

/// Of the data of Send Message. No value for a message that is too short or
/// whose sums are wrong.
std::optional<IpmbMessage> unwrap(const Bytes& data);

/// What Get Message gives of its answer, after the completion code.
Bytes wrap(const IpmbMessage& message, const Bytes& answer);

} // namespace Sim

#endif
