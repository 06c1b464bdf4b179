#include "sim/profile/syntax.h"

#include <nlohmann/json.hpp>
#include <set>

namespace Sim
{
namespace
{

using Json = nlohmann::json;

std::string lineAndColumn(const std::string& text, size_t offset)
{
    size_t line = 1;
    size_t column = 1;
    for (size_t at = 0; at < offset && at < text.size(); ++at) {
        column = text[at] == '\n' ? 1 : column + 1;
        line += text[at] == '\n';
    }
    return std::to_string(line) + ':' + std::to_string(column);
}

/// What the parser says, without its own name and place in front.
std::string reasonOf(const std::string& what)
{
    const std::string reason = what.substr(what.find("] ") + 2);
    const size_t place = reason.find(": ");
    return reason.rfind("parse error", 0) == 0 && place != std::string::npos
               ? reason.substr(place + 2)
               : reason;
}

/// Watches the parser go by: knows where it is and which keys it has seen.
class Follower
{
public:
    explicit Follower(Mistakes& mistakes) : mistakes_{mistakes} {}

    bool see(Json::parse_event_t event, const Json& parsed)
    {
        using Event = Json::parse_event_t;
        if (event == Event::object_start || event == Event::array_start)
            open_.push_back({event == Event::array_start, 0, {}, {}});
        else if (event == Event::key)
            seeKey(parsed.get_ref<const std::string&>());
        else
            endItem(event != Event::value);
        return true;
    }

    /// JSON pointer to what is being read.
    std::string place() const
    {
        std::string pointer;
        for (const Frame& frame : open_)
            pointer += '/' + (frame.isArray ? std::to_string(frame.index)
                                            : escapePointer(frame.key));
        return pointer;
    }

private:
    struct Frame
    {
        bool isArray;
        size_t index; ///< Of the item that is read, or comes next.
        std::string key;
        std::set<std::string> keys;
    };

    void endItem(bool wasContainer)
    {
        if (wasContainer)
            open_.pop_back();
        if (!open_.empty())
            ++open_.back().index;
    }

    void seeKey(const std::string& key)
    {
        open_.back().key = key;
        if (!open_.back().keys.insert(key).second)
            mistakes_.push_back({place(), "this key stands twice"});
    }

    Mistakes& mistakes_;
    std::vector<Frame> open_;
};

} // namespace

std::string escapePointer(const std::string& key)
{
    std::string escaped;
    for (char c : key)
        escaped += c == '~' ? "~0" : c == '/' ? "~1" : std::string{c};
    return escaped;
}

Json parseJson(const std::string& text, Mistakes& mistakes)
{
    Follower follower{mistakes};
    try {
        return Json::parse(text,
                           [&](int, Json::parse_event_t event, Json& parsed) {
                               return follower.see(event, parsed);
                           });
    } catch (const Json::parse_error& error) {
        mistakes.push_back(
            {lineAndColumn(text, error.byte ? error.byte - 1 : 0),
             reasonOf(error.what())});
    } catch (const Json::exception& error) {
        // A number beyond what a double holds.
        mistakes.push_back({follower.place(), reasonOf(error.what())});
    }
    return Json{};
}

} // namespace Sim
