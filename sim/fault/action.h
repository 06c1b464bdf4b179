/// What a fault rule can do. A new action is one row of the table.
#ifndef VEK_SIM_FAULT_ACTION_H
#define VEK_SIM_FAULT_ACTION_H

#include "sim/controller.h"
#include "sim/fault/fault.h"

namespace Sim
{

/// What the controller answered before, for faults that mix answers up.
struct AnswerMemory
{
    struct Exchange
    {
        Request request;
        Outcome outcome;
    };
    std::optional<Exchange> last;
    std::optional<Exchange> lastOther; ///< The last with another request.
    std::optional<Outcome> withheld;   ///< Out of turn: for the next request.

    void remember(const Request& request, const Outcome& outcome);
};

struct FaultAction
{
    /// When it comes: instead of an open, instead of a send that then never
    /// reaches the controller, before the controller answers, or to the
    /// answer.
    enum class Phase
    {
        Open,
        Send,
        Controller,
        Answer
    };

    struct Context
    {
        const Request& request;
        Bmc& bmc;
        AnswerMemory& memory;
        Outcome& outcome;
        bool answered;  ///< Set before the answer: the model is not asked.
        bool outOfTurn; ///< The answer waits for the next request.
    };

    const char* key;
    Phase phase;
    /// What was expected instead of this argument; null when it is right.
    const char* (*parse)(Fault& fault, const std::string& argument);
    void (*apply)(const Fault& fault, Context& context);
};

/// The delay is the exchange's, and stays.
void replaceAnswer(Outcome& outcome, const Outcome& answer);

const FaultAction* findFaultAction(const std::string& key);
std::vector<std::string> faultActionKeys();

} // namespace Sim

#endif
