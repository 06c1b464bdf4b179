#include "tools/print/entity.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>

#include "tools/print/record.h"
#include "tools/print/words.h"

namespace Tool
{

namespace
{

struct Branches
{
    const char *inner, *last, *through;
};

constexpr Branches unicodeBranches = {"\u251c\u2500 ", "\u2514\u2500 ",
                                      "\u2502  "},
                   asciiBranches = {"|- ", "`- ", "|  "};
constexpr char blank[] = "   ";

/// Containers deeper than that begin at the left again.
constexpr size_t deepest = 8;

class Drawing
{
public:
    Drawing(const std::vector<Entity>& entities, const TreeStyle& style);
    std::string text();

private:
    /// @param prefix of the lines below the entity's own.
    void draw(const Entity& entity, const std::string& prefix, size_t depth);
    void drawContents(const Entity& entity, const std::string& prefix,
                      size_t depth);
    void drawMembers(const std::string& title,
                     const std::vector<EntityMember>& members,
                     const std::string& prefix);
    bool hasMore(const Entity& entity) const;

    const std::vector<Entity>& entities_;
    const TreeStyle& style_;
    const Branches& branches_;
    std::map<EntityId, const Entity*> byId_;
    std::set<EntityId> drawn_;
    std::string text_;
};

Drawing::Drawing(const std::vector<Entity>& entities, const TreeStyle& style)
    : entities_{entities},
      style_{style},
      branches_{style.unicode ? unicodeBranches : asciiBranches}
{
    for (const Entity& entity : entities)
        byId_[entity.id] = &entity;
}

// What is in nothing first; what is left is in itself, or too deep.
std::string Drawing::text()
{
    for (const bool all : {false, true})
        for (const Entity& entity : entities_)
            if ((all || entity.containedIn.empty()) &&
                drawn_.count(entity.id) == 0)
                draw(entity, "", 0);
    return text_;
}

bool Drawing::hasMore(const Entity& entity) const
{
    return !entity.contains.empty() || !entity.frus.empty() ||
           !entity.devices.empty() ||
           (style_.sensors && !entity.sensors.empty());
}

void Drawing::draw(const Entity& entity, const std::string& prefix,
                   size_t depth)
{
    text_ += entityText(entity);
    const bool again = drawn_.count(entity.id) != 0;
    const bool tooDeep = depth > deepest;
    if ((again || tooDeep) && hasMore(entity))
        text_ += again ? " (see above)" : " (see below)";
    text_ += '\n';
    if (again || (tooDeep && hasMore(entity)))
        return;
    drawn_.insert(entity.id);
    const std::string below =
        prefix + (entity.contains.empty() ? blank : branches_.through) + "  ";
    drawMembers("FRU: ", entity.frus, below);
    drawMembers("Devices: ", entity.devices, below);
    if (style_.sensors)
        drawMembers("Sensors: ", entity.sensors, below);
    drawContents(entity, prefix, depth);
}

void Drawing::drawContents(const Entity& entity, const std::string& prefix,
                           size_t depth)
{
    for (const EntityId& id : entity.contains) {
        const bool isLast = &id == &entity.contains.back();
        text_ += prefix + (isLast ? branches_.last : branches_.inner);
        draw(*byId_.at(id), prefix + (isLast ? blank : branches_.through),
             depth + 1);
    }
}

// As many to a line as it has room for.
void Drawing::drawMembers(const std::string& title,
                          const std::vector<EntityMember>& members,
                          const std::string& prefix)
{
    const std::string indent(title.size(), ' ');
    std::string line = prefix + title;
    bool isEmpty = true;
    for (const EntityMember& member : members) {
        std::string name = member.name.empty() ? "(no name)" : member.name;
        name += &member == &members.back() ? "" : ",";
        const size_t width = widthOf(line) + widthOf(name) + (isEmpty ? 0 : 1);
        if (!isEmpty && width > style_.width) {
            text_ += line + '\n';
            line = prefix + indent;
            isEmpty = true;
        }
        line += (isEmpty ? "" : " ") + name;
        isEmpty = false;
    }
    if (!isEmpty)
        text_ += line + '\n';
}

const char* charsetLocale()
{
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"})
        if (const char* value = getenv(name); value && *value)
            return value;
    return nullptr;
}

// Where nobody says anything it is UTF-8, as names are in any case. The locale
// itself is not asked: it may not be installed.
bool wantsUnicode()
{
    const char* locale = charsetLocale();
    if (!locale)
        return true;
    const std::string name = lowered(locale);
    return name.find("utf-8") != std::string::npos ||
           name.find("utf8") != std::string::npos;
}

std::string counted(size_t count, const char* what)
{
    return std::to_string(count) + " " + what;
}

std::string summary(const std::vector<Entity>& entities)
{
    size_t sensors = 0, frus = 0;
    for (const Entity& entity : entities) {
        sensors += entity.sensors.size();
        frus += entity.frus.size();
    }
    return counted(entities.size(), "entities, ") +
           counted(sensors, "sensors, ") + counted(frus, "FRU devices\n");
}

Json idJson(const EntityId& id)
{
    const bool isRelative = id.isRelative();
    return {{"id", id.id},
            {"instance", id.instance},
            {"address", isRelative ? Json(id.address) : Json(nullptr)},
            {"channel", isRelative ? Json(id.channel) : Json(nullptr)}};
}

Json idsJson(const std::vector<EntityId>& ids)
{
    Json json = Json::array();
    for (const EntityId& id : ids)
        json.push_back(idJson(id));
    return json;
}

Json nameJson(const EntityMember& member)
{
    return member.name.empty() ? Json(nullptr) : Json(member.name);
}

Json sensorJson(const EntityMember& sensor)
{
    return {{"deviceId", sensor.sensor}, {"name", nameJson(sensor)}};
}

Json fruJson(const EntityMember& fru)
{
    return {{"deviceId", fru.fruDeviceId},
            {"logical", fru.isLogical},
            {"address", fru.address},
            {"channel", fru.channel},
            {"name", nameJson(fru)}};
}

Json deviceJson(const EntityMember& device)
{
    return {{"recordType", device.recordType},
            {"address", device.address},
            {"channel", device.channel},
            {"name", nameJson(device)}};
}

Json listJson(const std::vector<EntityMember>& members,
              Json (*toJson)(const EntityMember&))
{
    Json json = Json::array();
    for (const EntityMember& member : members)
        json.push_back(toJson(member));
    return json;
}

Json toJson(const Entity& entity)
{
    Json json = idJson(entity.id);
    json["name"] = entity.name;
    json["alertClass"] = entity.alertClass;
    json["contains"] = idsJson(entity.contains);
    json["containedIn"] = idsJson(entity.containedIn);
    json["sensors"] = listJson(entity.sensors, sensorJson);
    json["frus"] = listJson(entity.frus, fruJson);
    json["devices"] = listJson(entity.devices, deviceJson);
    return json;
}

} // namespace

TreeStyle TreeStyle::ofOutput()
{
    const Terminal terminal = Terminal::ofOutput();
    TreeStyle style;
    style.unicode = wantsUnicode();
    if (terminal.present())
        style.width = terminal.width();
    return style;
}

std::string toTree(const std::vector<Entity>& entities, const TreeStyle& style)
{
    std::string text = Drawing{entities, style}.text();
    text += text.empty() ? "" : "\n";
    return text + summary(entities);
}

std::string entityText(const Entity& entity)
{
    constexpr uint8_t lastNamed = 0x36;
    constexpr uint8_t ownAddress = 0x20;
    const EntityId& id = entity.id;
    std::string text =
        entity.name + " " +
        (id.id > lastNamed ? "(" + hexNumber(id.id) + ") " : "") +
        std::to_string(id.instance);
    if (id.isRelative() && (id.address != ownAddress || id.channel != 0))
        text += " of " + hexNumber(id.address);
    if (id.channel != 0)
        text += " on channel " + std::to_string(id.channel);
    return text;
}

Json toJson(const std::vector<Entity>& entities, const Repository& repository)
{
    Json json = document("entities");
    json["repository"] = toJson(repository);
    json["entities"] = Json::array();
    for (const Entity& entity : entities)
        json["entities"].push_back(toJson(entity));
    return json;
}

} // namespace Tool
