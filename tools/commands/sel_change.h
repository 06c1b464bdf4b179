/// Changing the event log under a reservation (IPMI v2.0, 31.4).
#ifndef VEK_TOOLS_COMMANDS_SEL_CHANGE_H
#define VEK_TOOLS_COMMANDS_SEL_CHANGE_H

#include "tools/device.h"

namespace Tool
{

constexpr uint8_t lowByte(unsigned value)
{
    return static_cast<uint8_t>(value);
}

constexpr uint8_t highByte(unsigned value)
{
    return static_cast<uint8_t>(value >> 8);
}

/// What is to be changed, how it is called then, and how to look at it.
struct SelChange
{
    std::string what; ///< "record 16"
    const char* done; ///< "deleted"
    const char* look; ///< "List them with: vek-ipmi sel"
};

/// "WHAT was not DONE", or without an answer "WHAT may have been DONE".
Failure failureOf(const SelChange& change, Command command,
                  const Completion& completion);

/// Thrown when the log changed under its reservation, or is busy.
struct TryAgain
{
    Command command;
    Completion completion;

    bool isReservationLost() const;
};

/// @throws TryAgain when the answer says to.
void checkAgain(Command command, const Completion& completion);

/// 0 of a controller without reservations.
/// @throws TryAgain, Failure
uint16_t reserveSel(Device& device);

/// Waits before the next try, or gives up.
/// @throws Failure after the last one.
void beforeNextTry(const SelChange& change, const TryAgain& reason, int tries);

/// Begins anew, each time with a new reservation, while other programs change
/// the log or reserve it themselves.
template <typename Steps>
auto withReservation(Device& device, const SelChange& change, Steps steps)
{
    for (int tries = 1;; ++tries)
        try {
            return steps(reserveSel(device));
        } catch (const TryAgain& reason) {
            beforeNextTry(change, reason, tries);
        }
}

} // namespace Tool

#endif
