/// A row of the model's command table, and the tables that families offer.
#ifndef VEK_SIM_MODEL_COMMAND_H
#define VEK_SIM_MODEL_COMMAND_H

#include <cstddef>
#include <cstdint>

#include "sim/model/message.h"

namespace Sim
{

class Bmc;

struct Command
{
    uint8_t netFn;
    uint8_t code;
    const char* name; ///< As fault rules and counters spell it.
    size_t minData;   ///< Fewer or more request bytes are answered C7h.
    size_t maxData;
    Bytes (*run)(Bmc& bmc, const Bytes& data);
};

/// The commands of one area. A controller whose profile lacks the area
/// answers all of them C1h.
struct Family
{
    template <size_t count>
    constexpr Family(const Command (&rows)[count],
                     bool (*isPresent)(const Bmc&))
        : first{rows}, last{rows + count}, present{isPresent}
    {}

    const Command* first;
    const Command* last;
    bool (*present)(const Bmc&);
};

/// Null when no family has it.
const Command* findCommand(uint8_t netFn, uint8_t code);
const Command* findCommand(const char* name);

} // namespace Sim

#endif
