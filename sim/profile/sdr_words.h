/// Words for the codes in sensor data records.
#ifndef VEK_SIM_PROFILE_SDR_WORDS_H
#define VEK_SIM_PROFILE_SDR_WORDS_H

#include "sim/model/sdr_record.h"
#include "sim/profile/fields.h"

namespace Sim::SdrWords
{

constexpr Word recordTypes[] = {
    {"full", sdr::full},
    {"compact", sdr::compact},
    {"event-only", sdr::eventOnly},
    {"entity-association", sdr::entityAssociation},
    {"device-entity-association", sdr::deviceEntityAssociation},
    {"generic-locator", sdr::genericLocator},
    {"fru-locator", sdr::fruLocator},
    {"mc-locator", sdr::mcLocator},
    {"oem", sdr::oem},
};

constexpr Word encodings[] = {
    {"unicode", 0}, {"bcd-plus", 1}, {"6-bit", 2}, {"8-bit", 3}};

// IPMI v2.0, table 43-13.
constexpr Word entities[] = {
    {"processor", 0x03},
    {"disk", 0x04},
    {"system-management-module", 0x06},
    {"system-board", 0x07},
    {"memory-module", 0x08},
    {"power-supply", 0x0A},
    {"add-in-card", 0x0B},
    {"front-panel", 0x0C},
    {"drive-backplane", 0x0F},
    {"power-unit", 0x13},
    {"power-module", 0x14},
    {"fan", 0x1D},
    {"cooling-unit", 0x1E},
    {"memory-device", 0x20},
    {"system-firmware", 0x22},
    {"chassis", 0x17},
    {"battery", 0x28},
    {"management-controller", 0x2E},
    {"air-inlet", 0x37},
};

// IPMI v2.0, table 42-3.
constexpr Word sensorTypes[] = {
    {"temperature", 0x01},
    {"voltage", 0x02},
    {"current", 0x03},
    {"fan", 0x04},
    {"physical-security", 0x05},
    {"platform-security", 0x06},
    {"processor", 0x07},
    {"power-supply", 0x08},
    {"power-unit", 0x09},
    {"cooling-device", 0x0A},
    {"other-units", 0x0B},
    {"memory", 0x0C},
    {"drive-slot", 0x0D},
    {"memory-resize", 0x0E},
    {"system-firmware", 0x0F},
    {"event-logging", 0x10},
    {"watchdog-1", 0x11},
    {"system-event", 0x12},
    {"critical-interrupt", 0x13},
    {"button", 0x14},
    {"module", 0x15},
    {"microcontroller", 0x16},
    {"add-in-card", 0x17},
    {"chassis", 0x18},
    {"chip-set", 0x19},
    {"other-fru", 0x1A},
    {"cable", 0x1B},
    {"terminator", 0x1C},
    {"system-boot", 0x1D},
    {"boot-error", 0x1E},
    {"os-boot", 0x1F},
    {"os-stop", 0x20},
    {"slot", 0x21},
    {"acpi-power", 0x22},
    {"watchdog-2", 0x23},
    {"platform-alert", 0x24},
    {"entity-presence", 0x25},
    {"monitor", 0x26},
    {"lan", 0x27},
    {"management-health", 0x28},
    {"battery", 0x29},
    {"session-audit", 0x2A},
    {"version-change", 0x2B},
    {"fru-state", 0x2C},
};

// IPMI v2.0, table 42-1.
constexpr Word eventTypes[] = {
    {"threshold", 0x01},   {"usage", 0x02},      {"state", 0x03},
    {"predictive", 0x04},  {"limit", 0x05},      {"performance", 0x06},
    {"severity", 0x07},    {"presence", 0x08},   {"enabled", 0x09},
    {"transition", 0x0A},  {"redundancy", 0x0B}, {"acpi", 0x0C},
    {"sensor-type", 0x6F},
};

// IPMI v2.0, table 43-15.
constexpr Word units[] = {
    {"unspecified", 0},  {"degrees-c", 1},    {"degrees-f", 2},
    {"degrees-k", 3},    {"volts", 4},        {"amps", 5},
    {"watts", 6},        {"joules", 7},       {"va", 9},
    {"lux", 12},         {"kpa", 14},         {"psi", 15},
    {"cfm", 17},         {"rpm", 18},         {"hz", 19},
    {"microsecond", 20}, {"millisecond", 21}, {"second", 22},
    {"minute", 23},      {"hour", 24},        {"day", 25},
    {"millimeter", 32},  {"meter", 34},       {"liter", 37},
    {"gravity", 43},     {"ohm", 54},         {"decibel", 60},
    {"byte", 70},        {"packets", 85},     {"error", 88},
};

constexpr Word analogFormats[] = {{"unsigned", 0},
                                  {"ones-complement", 1},
                                  {"twos-complement", 2},
                                  {"none", 3}};
constexpr Word rates[] = {{"none", 0},   {"microsecond", 1}, {"millisecond", 2},
                          {"second", 3}, {"minute", 4},      {"hour", 5},
                          {"day", 6}};
constexpr Word modifierUses[] = {{"none", 0}, {"divided", 1}, {"times", 2}};
constexpr Word linearizations[] = {
    {"linear", 0},        {"ln", 1},    {"log10", 2}, {"log2", 3},
    {"exp", 4},           {"exp10", 5}, {"exp2", 6},  {"inverse", 7},
    {"square", 8},        {"cube", 9},  {"sqrt", 10}, {"cube-root", 11},
    {"non-linear", 0x70},
};
constexpr Word directions[] = {{"unspecified", 0}, {"input", 1}, {"output", 2}};
constexpr Word modifierTypes[] = {{"numeric", 0}, {"alphabetic", 1}};
constexpr Word accesses[] = {
    {"none", 0}, {"readable", 1}, {"settable", 2}, {"fixed", 3}};
constexpr Word eventControls[] = {
    {"per-state", 0}, {"entire", 1}, {"global", 2}, {"none", 3}};
constexpr Word initializations[] = {
    {"settable", 0x80},       {"scanning", 0x40},         {"events", 0x20},
    {"thresholds", 0x10},     {"hysteresis", 0x08},       {"type", 0x04},
    {"events-enabled", 0x02}, {"scanning-enabled", 0x01},
};
constexpr Word analogCharacteristics[] = {
    {"nominal", 1}, {"normal-maximum", 2}, {"normal-minimum", 4}};
constexpr Word thresholds[] = {{"lnc", 0x01}, {"lc", 0x02}, {"lnr", 0x04},
                               {"unc", 0x08}, {"uc", 0x10}, {"unr", 0x20}};
constexpr Word thresholdEvents[] = {
    {"lnc-low", 1 << 0}, {"lnc-high", 1 << 1}, {"lc-low", 1 << 2},
    {"lc-high", 1 << 3}, {"lnr-low", 1 << 4},  {"lnr-high", 1 << 5},
    {"unc-low", 1 << 6}, {"unc-high", 1 << 7}, {"uc-low", 1 << 8},
    {"uc-high", 1 << 9}, {"unr-low", 1 << 10}, {"unr-high", 1 << 11},
};
// IPMI v2.0, 20.1, byte 7; 43.9, byte 8.
constexpr Word mcCapabilities[] = {
    {"sensor-device", 0x01}, {"sdr-repository", 0x02}, {"sel", 0x04},
    {"fru-inventory", 0x08}, {"ipmb-receiver", 0x10},  {"ipmb-generator", 0x20},
    {"bridge", 0x40},        {"chassis", 0x80},
};

} // namespace Sim::SdrWords

#endif
