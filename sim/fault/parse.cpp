#include <algorithm>

#include "sim/fault/action.h"
#include "sim/fault/argument.h"
#include "sim/model/command.h"
#include "sim/profile/hex.h"

namespace Sim
{
namespace
{

Expected parseNetFn(Fault& fault, const std::string& argument)
{
    uint8_t netFn = 0;
    if (parseHexByte(argument, netFn) || netFn > 0x3E || netFn & 1)
        return "an even network function from 00 to 3e";
    if (fault.netFn.value_or(netFn) != netFn)
        return "the network function of the command before it";
    fault.netFn = netFn;
    return nullptr;
}

/// A name brings its network function along.
Expected parseCommand(Fault& fault, const std::string& argument)
{
    uint8_t code = 0;
    const Command* named = findCommand(argument.c_str());
    if (!named && parseHexByte(argument, code))
        return "a hexadecimal byte or a name such as get-device-id";
    if (named && fault.netFn.value_or(named->netFn) != named->netFn)
        return "a command of the network function before it";
    fault.command = named ? named->code : code;
    if (named)
        fault.netFn = named->netFn;
    return nullptr;
}

// What chooses requests and which of them; the actions have a table of their
// own.
constexpr struct Selector
{
    const char* key;
    bool ofRequests; ///< No meaning at an open.
    Expected (*parse)(Fault& fault, const std::string& argument);
} selectors[] = {
    {"netfn", true, parseNetFn},
    {"cmd", true, parseCommand},
    {"data", true,
     [](Fault& f, const std::string& a) {
         return parsePattern(a, f.data);
     }},
    {"after", false,
     [](Fault& f, const std::string& a) {
         return parseWhole(a, f.after);
     }},
    {"nth", false,
     [](Fault& f, const std::string& a) {
         return parseCount(a, f.nth);
     }},
    {"every", false,
     [](Fault& f, const std::string& a) {
         return parseCount(a, f.every);
     }},
    {"count", false,
     [](Fault& f, const std::string& a) {
         return parseCount(a, f.count);
     }},
    {"rate", false,
     [](Fault& f, const std::string& a) {
         return parseRate(a, f.rate);
     }},
    {"seed", false,
     [](Fault& f, const std::string& a) {
         return parseWhole(a, f.seed);
     }},
};

std::vector<std::string> allKeys()
{
    std::vector<std::string> keys = faultActionKeys();
    for (const Selector& selector : selectors)
        keys.push_back(selector.key);
    return keys;
}

/// One "key=value" of a rule.
struct Clause
{
    std::string key;
    std::string argument;
    size_t column; ///< From 1.
};

std::vector<Clause> split(const std::string& rule)
{
    std::vector<Clause> clauses;
    for (size_t at = 0; at <= rule.size();) {
        const size_t end = std::min(rule.find(',', at), rule.size());
        const std::string text = rule.substr(at, end - at);
        const size_t equals = std::min(text.find('='), text.size());
        clauses.push_back({text.substr(0, equals),
                           text.substr(std::min(equals + 1, text.size())),
                           at + 1});
        at = end + 1;
    }
    return clauses;
}

/// Reads the clauses of one rule into a fault.
class RuleParser
{
public:
    explicit RuleParser(Mistake& mistake) : mistake_{mistake} {}

    std::optional<Fault> parse(const std::string& rule)
    {
        for (const Clause& clause : split(rule))
            if (!take(clause))
                return std::nullopt;
        if (!fault_.action)
            return refuse(1, "no action in \"" + rule + "\"; one of " +
                                 joined(faultActionKeys()));
        if (ofRequests_ && fault_.action->phase == FaultAction::Phase::Open)
            return refuse(ofRequests_, "an open has no request to match");
        return fault_;
    }

private:
    bool take(const Clause& clause)
    {
        if (std::count(seen_.begin(), seen_.end(), clause.key))
            return wrong(clause, "\"" + clause.key + "\" stands twice");
        seen_.push_back(clause.key);
        for (const Selector& selector : selectors)
            if (clause.key == selector.key) {
                if (selector.ofRequests)
                    ofRequests_ = clause.column;
                return check(clause, selector.parse(fault_, clause.argument));
            }
        if (const FaultAction* action = findFaultAction(clause.key))
            return takeAction(clause, *action);
        const std::string guess = closest(clause.key, allKeys());
        return wrong(
            clause,
            "unknown key \"" + clause.key + "\"" +
                (guess.empty() ? "" : "; did you mean \"" + guess + "\"?"));
    }

    bool takeAction(const Clause& clause, const FaultAction& action)
    {
        if (fault_.action)
            return wrong(clause, "one action a rule, and \"" +
                                     std::string{fault_.action->key} +
                                     "\" stands before \"" + clause.key + "\"");
        fault_.action = &action;
        return check(clause, action.parse(fault_, clause.argument));
    }

    bool check(const Clause& clause, Expected expected)
    {
        return !expected ||
               wrong(clause, "\"" + clause.key + "\" expects " + expected +
                                 ", not \"" + clause.argument + "\"");
    }

    bool wrong(const Clause& clause, const std::string& reason)
    {
        refuse(clause.column, reason);
        return false;
    }

    std::nullopt_t refuse(size_t column, const std::string& reason)
    {
        mistake_ = {"column " + std::to_string(column), reason};
        return std::nullopt;
    }

    static std::string joined(const std::vector<std::string>& words)
    {
        std::string text;
        for (const std::string& word : words)
            text += (text.empty() ? "" : ", ") + word;
        return text;
    }

    Mistake& mistake_;
    Fault fault_;
    std::vector<std::string> seen_;
    size_t ofRequests_ = 0; ///< Column of a clause that matches requests.
};

} // namespace

std::optional<Fault> parseFault(const std::string& rule, Mistake& mistake)
{
    return RuleParser{mistake}.parse(rule);
}

} // namespace Sim
