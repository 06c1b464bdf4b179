#include "tools/commands/sel_change.h"

#include <unistd.h>

#include "tools/print/completion_codes.h"

namespace Tool
{

namespace
{

constexpr uint8_t erasing = 0x81, busy = 0xC0, unsupported = 0xC1,
                  reservationLost = 0xC5;

} // namespace

Failure failureOf(const SelChange& change, Command command,
                  const Completion& completion)
{
    if (!completion.isUnanswered())
        return failureOf(change.what + " was not " + change.done, command,
                         completion);
    return {Status::failed,
            change.what + " may have been " + change.done + ": " +
                inWords(command, completion),
            change.look};
}

bool TryAgain::isReservationLost() const
{
    return completion.code == reservationLost;
}

void checkAgain(Command command, const Completion& completion)
{
    if (!completion.answered)
        return;
    for (const uint8_t code : {erasing, busy, reservationLost})
        if (completion.code == code)
            throw TryAgain{command, completion};
}

uint16_t reserveSel(Device& device)
{
    constexpr char unreserved[] = "the event log was not reserved";
    const Answer answer = device.exchange(commands::reserveSel, {});
    const Completion& completion = answer.completion;
    if (completion.answered && completion.code == unsupported)
        return 0;
    checkAgain(commands::reserveSel, completion);
    if (!completion.ok())
        throw failureOf(unreserved, commands::reserveSel, completion);
    if (answer.data.size() < 2)
        throw Failure{Status::failed,
                      std::string{unreserved} + ": the answer was cut",
                      "Try again."};
    return static_cast<uint16_t>(answer.data[0] | answer.data[1] << 8);
}

void beforeNextTry(const SelChange& change, const TryAgain& reason, int tries)
{
    constexpr int most = 5;
    constexpr unsigned pause = 2;
    if (tries < most) {
        if (!reason.isReservationLost())
            sleep(pause);
        return;
    }
    if (!reason.isReservationLost())
        throw failureOf(change, reason.command, reason.completion);
    throw Failure{Status::refused,
                  "the event log changed each time before " + change.what +
                      " could be " + change.done + " (C5h)",
                  "Try again when no other program uses the log."};
}

} // namespace Tool
