// vek-ipmi events [set|rearm] SENSOR
#include <CLI/CLI.hpp>

#include <memory>

#include "tools/commands/commands.h"
#include "tools/commands/discovery.h"
#include "tools/commands/find.h"
#include "tools/print/event.h"
#include "tools/print/output.h"
#include "tools/print/state.h"
#include "tools/print/words.h"

namespace Tool
{

namespace
{

struct Arguments
{
    std::string sensor, messages, scanning;
    std::vector<std::string> enable, disable;
};

using Change = std::function<void(Device&, const Sensor&)>;

[[noreturn]] void refuse(const Sensor& sensor, const std::string& why,
                         const std::string& next = "")
{
    throw Failure{Status::usage, "events of '" + sensor.name + "': " + why,
                  next};
}

struct Masks
{
    unsigned assertion = 0, deassertion = 0;
};

// "EVENT", "EVENT:begins" or "EVENT:ends"
struct EventText
{
    std::string event;
    bool begins = true, ends = true;

    explicit EventText(const std::string& text) : event{text}
    {
        const size_t colon = text.rfind(':');
        const std::string side =
            colon == std::string::npos ? "" : text.substr(colon + 1);
        if (side != "begins" && side != "ends")
            return;
        event.resize(colon);
        begins = side == "begins";
        ends = side == "ends";
    }
};

unsigned offsetOf(const Sensor& sensor, const std::string& event)
{
    for (unsigned i = 0; i < eventCount(sensor); ++i)
        if (lowered(event) == eventKey(sensor, i) ||
            asWord(event) == asWord(eventName(sensor, i)))
            return i;
    refuse(sensor, "there is no event '" + event + "'",
           "List them with: vek-ipmi events " + sensor.deviceId);
}

void add(const Sensor& sensor, const EventText& text, Masks& masks)
{
    const unsigned bit = 1u << offsetOf(sensor, text.event);
    const unsigned assertion = text.begins ? bit & sensor.assertionMask : 0;
    const unsigned deassertion = text.ends ? bit & sensor.deassertionMask : 0;
    if (!assertion && !deassertion)
        refuse(sensor,
               "it does not send '" + text.event + "'" +
                   (text.begins && text.ends ? ""
                    : text.begins            ? " when that begins"
                                             : " when that ends"),
               "List them with: vek-ipmi events " + sensor.deviceId);
    masks.assertion |= assertion;
    masks.deassertion |= deassertion;
}

Masks masksOf(const Sensor& sensor, const std::vector<std::string>& events)
{
    Masks masks;
    for (const std::string& event : events)
        add(sensor, EventText{event}, masks);
    return masks;
}

// Event message control (IPMI v2.0, 43.1, byte 12).
void checkSupport(const Sensor& sensor, const Arguments& arguments)
{
    constexpr uint8_t wholeSensor = 1, controllerOnly = 2, none = 3;
    const bool single = !arguments.enable.empty() || !arguments.disable.empty();
    if (!single && arguments.messages.empty())
        return;
    if (sensor.eventSupport == none)
        refuse(sensor, "the sensor sends none");
    if (sensor.eventSupport == controllerOnly)
        refuse(sensor, "they can only be switched for the whole controller");
    if (single && sensor.eventSupport == wholeSensor)
        refuse(sensor, "they can only be switched all together",
               "Use --messages on or off.");
}

void send(Device& device, const Sensor& sensor, EventEnable flags,
          const Masks& masks, EventChange change)
{
    flags.assertion = masks.assertion;
    flags.deassertion = masks.deassertion;
    writeEventEnable(device, sensor, flags, change);
}

// What the controller says afterwards. With messages off it tells no events.
void checkChange(const EventEnable& now, const EventEnable& wanted,
                 const Masks& enable, const Masks& disable)
{
    const auto differs = [](const std::optional<unsigned>& mask, unsigned on,
                            unsigned off) {
        return mask && ((*mask & on) != on || (*mask & off) != 0);
    };
    if (now.messages == wanted.messages && now.scanning == wanted.scanning &&
        !differs(now.assertion, enable.assertion, disable.assertion) &&
        !differs(now.deassertion, enable.deassertion, disable.deassertion))
        return;
    throw Failure{Status::failed,
                  "the controller reports other events than were set",
                  "See what it has with: vek-ipmi events SENSOR"};
}

void set(Device& device, const Sensor& sensor, const Arguments& arguments)
{
    checkSupport(sensor, arguments);
    const Masks enable = masksOf(sensor, arguments.enable);
    const Masks disable = masksOf(sensor, arguments.disable);
    if (enable.assertion & disable.assertion ||
        enable.deassertion & disable.deassertion)
        refuse(sensor, "an event is to be switched both on and off");
    EventEnable flags = readEventEnable(device, sensor);
    if (!arguments.messages.empty())
        flags.messages = arguments.messages == "on";
    if (!arguments.scanning.empty())
        flags.scanning = arguments.scanning == "on";
    if (arguments.enable.empty() && arguments.disable.empty())
        send(device, sensor, flags, {}, EventChange::none);
    if (!arguments.enable.empty())
        send(device, sensor, flags, enable, EventChange::enable);
    if (!arguments.disable.empty())
        send(device, sensor, flags, disable, EventChange::disable);
    checkChange(readEventEnable(device, sensor), flags, enable, disable);
}

Status run(const std::string& what, const Change& change,
           const Options& options)
{
    Sensor sensor;
    EventEnable enable;
    {
        Device device;
        const Discovery discovery = readDiscovery(device);
        sensor = findForWriting(discovery, what);
        refuseSatellite(sensor);
        if (sensor.condition == Condition::eventOnly)
            refuse(sensor, "the controller does not read it, it only sends "
                           "them and cannot be asked");
        change(device, sensor);
        enable = readEventEnable(device, sensor);
    }
    put(options.json ? toText(eventsJson(sensor, enable))
                     : eventsTable(sensor, enable));
    return Status::done;
}

void addSet(CLI::App& events, Run& runs)
{
    CLI::App* app = events.add_subcommand("set", "Switch events on and off");
    const auto arguments = std::make_shared<Arguments>();
    app->add_option("SENSOR", arguments->sensor, sensorHelp)->required();
    CLI::Option_group* group = app->add_option_group("changes");
    const CLI::IsMember onOrOff{{"on", "off"}};
    group
        ->add_option("--messages", arguments->messages,
                     "Whether the sensor sends events at all")
        ->check(onOrOff);
    group
        ->add_option("--scanning", arguments->scanning,
                     "Whether the controller scans the sensor")
        ->check(onOrOff);
    group
        ->add_option("--enable", arguments->enable,
                     "Events to switch on, as 'vek-ipmi events' names them")
        ->allow_extra_args(false);
    group->add_option("--disable", arguments->disable, "Events to switch off")
        ->allow_extra_args(false);
    group->require_option(1, 0);
    addNotes(*app,
             "What is not given stays as it is. EVENT:begins and EVENT:ends "
             "mean one message\nof an event alone.\n\n"
             "Examples:\n"
             "  vek-ipmi events set \"Inlet Temp\" --enable uc-high --enable "
             "unc-high:begins\n"
             "  vek-ipmi events set \"PSU Redundancy\" --messages off");
    app->callback([arguments, &runs] {
        runs = [arguments](const Options& options) {
            return run(
                arguments->sensor,
                [&](Device& device, const Sensor& sensor) {
                    set(device, sensor, *arguments);
                },
                options);
        };
    });
}

void addRearm(CLI::App& events, Run& runs)
{
    CLI::App* app =
        events.add_subcommand("rearm", "Let the sensor send its events again");
    const auto what = std::make_shared<std::string>();
    app->add_option("SENSOR", *what, sensorHelp)->required();
    app->callback([what, &runs] {
        runs = [what](const Options& options) {
            return run(*what, rearmEvents, options);
        };
    });
}

void addShow(CLI::App& events, Run& runs)
{
    const auto what = std::make_shared<std::string>();
    CLI::Option* sensor = events.add_option("SENSOR", *what, sensorHelp);
    events.callback([&events, what, sensor, &runs] {
        const bool other = !events.get_subcommands().empty();
        if (other && sensor->count() != 0)
            throw CLI::ExtrasError({*what});
        if (other)
            return;
        if (sensor->count() == 0)
            throw CLI::RequiredError("SENSOR");
        runs = [what](const Options& options) {
            return run(
                *what, [](Device&, const Sensor&) {}, options);
        };
    });
}

} // namespace

void addEvents(CLI::App& app, Run& runs)
{
    CLI::App* events = app.add_subcommand(
        "events", "Show, switch or re-arm the events of a sensor");
    addShow(*events, runs);
    addSet(*events, runs);
    addRearm(*events, runs);
    addNotes(*events, "Examples:\n"
                      "  vek-ipmi events \"Inlet Temp\"\n"
                      "  vek-ipmi events rearm \"Inlet Temp\"");
}

} // namespace Tool
