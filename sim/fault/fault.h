/// Rules by which a simulated controller goes wrong (docs/SIMULATOR.md).
#ifndef VEK_SIM_FAULT_FAULT_H
#define VEK_SIM_FAULT_FAULT_H

#include <optional>
#include <random>
#include <string>
#include <vector>

#include "sim/model/message.h"
#include "sim/profile/mistake.h"

namespace Sim
{

struct FaultAction; // sim/fault/action.h

/// A byte of a request: the bits under the mask have to be those of value.
struct BytePattern
{
    uint8_t value = 0;
    uint8_t mask = 0xFF;
};

/// One rule: which requests, which of them, and what happens then.
struct Fault
{
    std::optional<uint8_t> netFn;
    std::optional<uint8_t> command;
    std::vector<BytePattern> data; ///< What the request's data begin with.

    uint32_t after = 0; ///< The first so many matches are let pass.
    uint32_t nth = 0;   ///< Then only this one, from 1; 0: every one,
    uint32_t every = 1; ///< or each so manieth.
    uint32_t count = 0; ///< So often at most; 0: no limit.
    double rate = 1;    ///< Of those that are left, this share, by `seed`.
    uint32_t seed = 1;

    const FaultAction* action = nullptr;
    uint32_t value = 0; ///< The action's argument.
    uint8_t mask = 0;   ///< Bits that it flips.
};

/// No value when the text is not a rule; then `mistake` says where and why.
std::optional<Fault> parseFault(const std::string& rule, Mistake& mistake);

/// Whether the rule's action can befall this request.
bool matches(const Fault& fault, const Request& request);

/// Rules with their counts of what they have seen.
class FaultSet
{
public:
    /// A rule without an action is left out.
    void add(const Fault& fault);

    /// The rules whose turn it is with this request, in their order.
    std::vector<const Fault*> due(const Request& request);
    /// The same for an open of the device.
    std::vector<const Fault*> dueAtOpen();

private:
    struct Entry
    {
        Fault fault;
        uint32_t seen;
        uint32_t fired;
        std::mt19937 random;

        bool take();
    };
    std::vector<Entry> entries_;
};

} // namespace Sim

#endif
