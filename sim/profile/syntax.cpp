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
    const size_t end = what.find(": ");
    return end == std::string::npos ? what : what.substr(end + 2);
}

/// Watches the parser go by and collects the keys of each open object.
class DuplicateFinder
{
public:
    explicit DuplicateFinder(Mistakes& mistakes) : mistakes_{mistakes} {}

    bool see(Json::parse_event_t event, const Json& parsed)
    {
        using Event = Json::parse_event_t;
        if (event == Event::object_start)
            open_.emplace_back();
        else if (event == Event::object_end)
            open_.pop_back();
        else if (event == Event::key)
            seeKey(parsed.get_ref<const std::string&>());
        return true;
    }

private:
    void seeKey(const std::string& key)
    {
        if (open_.back().insert(key).second)
            return;
        mistakes_.push_back({"", "the key \"" + key +
                                     "\" stands twice in "
                                     "one object"});
    }

    Mistakes& mistakes_;
    std::vector<std::set<std::string>> open_;
};

} // namespace

Json parseJson(const std::string& text, Mistakes& mistakes)
{
    DuplicateFinder duplicates{mistakes};
    try {
        return Json::parse(text,
                           [&](int, Json::parse_event_t event, Json& parsed) {
                               return duplicates.see(event, parsed);
                           });
    } catch (const Json::parse_error& error) {
        mistakes.push_back(
            {lineAndColumn(text, error.byte ? error.byte - 1 : 0),
             reasonOf(error.what())});
    } catch (const Json::exception& error) {
        // A number beyond what a double holds.
        mistakes.push_back({"", reasonOf(error.what())});
    }
    return Json{};
}

} // namespace Sim
