// Names of entity ids (IPMI v2.0, table 43-13). The texts, misspelt or not,
// are compared by callers: they stay as they are.
#include <vek-ipmi/IpmiEntity.h>

#include <iterator>

namespace Ipmi
{

namespace
{

constexpr char plain[] = "VEK_IpmiAlertIndication";
constexpr char processor[] = "VEK_ProcessorIpmiAlertIndication";
constexpr char disk[] = "VEK_DiskIpmiAlertIndication";
constexpr char memory[] = "VEK_MemoryIpmiAlertIndication";
constexpr char power[] = "VEK_PowerIpmiAlertIndication";
constexpr char chassis[] = "VEK_ChassisIpmiAlertIndication";
constexpr char cooling[] = "VEK_CoolingUnitIpmiAlertIndication";
constexpr char bios[] = "VEK_BIOSIpmiAlertIndication";
constexpr char battery[] = "VEK_BatteryIpmiAlertIndication";

} // namespace

const IpmiEntity::Mapping IpmiEntity::_mapping[] = {
    {"Unspecified", plain},                     // 00h
    {"Other", plain},                           // 01h
    {"Unknown", plain},                         // 02h
    {"Processor", processor},                   // 03h
    {"Disk or Disk Bay", disk},                 // 04h
    {"Peripheral Bay", plain},                  // 05h
    {"System Management Module", plain},        // 06h
    {"System Board", plain},                    // 07h
    {"Memory Module", memory},                  // 08h
    {"Processor Module", processor},            // 09h
    {"Power Supply", power},                    // 0Ah
    {"Add-in Card", plain},                     // 0Bh
    {"Front Panel Board", plain},               // 0Ch
    {"Back Panel Board", plain},                // 0Dh
    {"Power System Board", plain},              // 0Eh
    {"Drive Backplane", plain},                 // 0Fh
    {"System Internal Expansion Board", plain}, // 10h
    {"Other System Board", plain},              // 11h
    {"Processor Board", plain},                 // 12h
    {"Power Domain", power},                    // 13h
    {"Power Module (DC-to-DC)", power},         // 14h
    {"Power Distribution", power},              // 15h
    {"Chassis Back Panel Board", plain},        // 16h
    {"System Chassis", chassis},                // 17h
    {"Sub-Chassis", chassis},                   // 18h
    {"Other Chassis Board", chassis},           // 19h
    {"Disk Drive Bay", plain},                  // 1Ah
    {"Peripheral Bay", plain},                  // 1Bh
    {"Device Bay", plain},                      // 1Ch
    {"Fan Device", cooling},                    // 1Dh
    {"Cooling Unit", cooling},                  // 1Eh
    {"Cable/Interconnect", plain},              // 1Fh
    {"Memory Device", memory},                  // 20h
    {"System Management Software", plain},      // 21h
    {"BIOS", bios},                             // 22h
    {"Operating System", plain},                // 23h
    {"System Bus", plain},                      // 24h
    {"Group", plain},                           // 25h
    {"Remote Management Device", plain},        // 26h
    {"External Environment", plain},            // 27h
    {"Battery", battery},                       // 28h
    {"Processing Blade", plain},                // 29h
    {"Connectivity Switch", plain},             // 2Ah
    {"Processor/Memory Module", plain},         // 2Bh
    {"I/O Module", plain},                      // 2Ch
    {"Processor/IO Module", plain},             // 2Dh
    {"Management Controller Firmware", plain},  // 2Eh
    {"IPMI Channel", plain},                    // 2Fh
    {"PCI Bus", plain},                         // 30h
    {"PCI Express Bus", plain},                 // 31h
    {"SCSI Bus (parallel)", plain},             // 32h
    {"SATA/SAS Bus", plain},                    // 33h
    {"Processor/Front-Side Bus", plain},        // 34h
    {"Real Time Clock", plain},                 // 35h
    {"System Firmware", plain},                 // 36h
};

std::string IpmiEntity::getName(unsigned id)
{
    static_assert(std::size(_mapping) == 0x37);
    if (id < std::size(_mapping))
        return _mapping[id].name;
    if (id >= 0x90 && id <= 0xaf)
        return "Chasis Specific";
    if (id >= 0xb0 && id <= 0xcf)
        return "Board Set Specific";
    if (id >= 0xd0 && id <= 0xff)
        return "OEM System Integrator defined";
    return "Other";
}

std::string IpmiEntity::getAlertClassName() const
{
    return id_ < std::size(_mapping) ? _mapping[id_].alertClassName : plain;
}

} // namespace Ipmi
