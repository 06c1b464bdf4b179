// What the offsets of events and of discrete states mean: IPMI v2.0, tables
// 42-2 and 42-3; from sensor type F0h on PICMG 3.0 and AMC.0. Callers compare
// and cut these texts: blanks at an end and slips of the pen stay.
#include "ipmi/IpmiEventTexts.h"

#include "ipmi/IpmiPerfectHash.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t any = EventText::anyData3;

// A name is typed once, however many rows and classes have it.
constexpr char threshold[] = "Threshold";
constexpr char usage[] = "Usage State";
constexpr char digital[] = "Digital State";
constexpr char severity[] = "Severity State";
constexpr char availability[] = "Availability State";
constexpr char redundancy[] = "Redundancy State";
constexpr char devicePower[] = "ACPI Device Power State";
constexpr char addInCard[] = "Add-in Card";
constexpr char cable[] = "Cable/Interconnect";
constexpr char temperature[] = "Temperature";
constexpr char voltage[] = "Voltage";
constexpr char current[] = "Current";
constexpr char fan[] = "Fan";
constexpr char physicalSecurity[] = "Physical Security";
constexpr char platformSecurity[] = "Platform Security";
constexpr char processor[] = "Processor";
constexpr char powerSupply[] = "Power Supply";
constexpr char powerUnit[] = "Power Unit";
constexpr char coolingDevice[] = "Cooling Device";
constexpr char otherUnits[] = "Other Units-based Sensor";
constexpr char memory[] = "Memory";
constexpr char driveSlot[] = "Drive Slot";
constexpr char memoryResize[] = "POST Memory Resize";
constexpr char firmwareError[] = "System Firmware Error";
constexpr char firmwareHang[] = "System Firmware Hang";
constexpr char firmwareProgress[] = "System Firmware Progress";
constexpr char loggingDisabled[] = "Event Logging Disabled";
constexpr char watchdog1[] = "Watchdog 1";
constexpr char systemEvent[] = "System Event";
constexpr char criticalInterrupt[] = "Critical Interrupt";
constexpr char button[] = "Button";
constexpr char module[] = "Module/Board";
constexpr char microcontroller[] = "Microcontroller/Coprocessor";
constexpr char chassis[] = "Chassis";
constexpr char chipSet[] = "Chip Set";
constexpr char otherFru[] = "Other FRU";
constexpr char terminator[] = "Terminator";
constexpr char bootInitiated[] = "System Boot Initiated";
constexpr char bootError[] = "Boot Error";
constexpr char osBoot[] = "OS Boot";
constexpr char osStop[] = "OS Stop/Shutdown";
constexpr char slot[] = "Slot/Connector";
constexpr char systemPower[] = "System ACPI Power State";
constexpr char watchdog2[] = "Watchdog 2";
constexpr char platformAlert[] = "Platform Alert";
constexpr char entityPresence[] = "Entity Presence";
constexpr char monitorAsic[] = "Monitor ASIC/IC";
constexpr char lan[] = "LAN";
constexpr char managementHealth[] = "Management Subsystem Health";
constexpr char battery[] = "Battery";
constexpr char versionChange[] = "Version Change";
constexpr char fruState[] = "FRU State";
constexpr char fruHotSwap[] = "FRU Hot Swap";
constexpr char ipmb0[] = "IPMB-0 Status";
constexpr char moduleHotSwap[] = "Module Hot Swap";
constexpr char sessionAudit[] = "Session Audit";

} // namespace

constexpr std::array<EventText, eventTextCount> ipmi_sel_data{{
    {1, 0x01, 0x00, any, threshold, "Lower Non-critical going low "},
    {1, 0x01, 0x01, any, threshold, "Lower Non-critical going high"},
    {1, 0x01, 0x02, any, threshold, "Lower Critical going low "},
    {1, 0x01, 0x03, any, threshold, "Lower Critical going high"},
    {1, 0x01, 0x04, any, threshold, "Lower Non-recoverable going low "},
    {1, 0x01, 0x05, any, threshold, "Lower Non-recoverable going high"},
    {1, 0x01, 0x06, any, threshold, "Upper Non-critical going low "},
    {1, 0x01, 0x07, any, threshold, "Upper Non-critical going high"},
    {1, 0x01, 0x08, any, threshold, "Upper Critical going low "},
    {1, 0x01, 0x09, any, threshold, "Upper Critical going high"},
    {1, 0x01, 0x0a, any, threshold, "Upper Non-recoverable going low "},
    {1, 0x01, 0x0b, any, threshold, "Upper Non-recoverable going high"},
    {1, 0x02, 0x00, any, usage, "Transition to Idle"},
    {1, 0x02, 0x01, any, usage, "Transition to Active"},
    {1, 0x02, 0x02, any, usage, "Transition to Busy"},
    {1, 0x03, 0x00, any, digital, "State Deasserted"},
    {1, 0x03, 0x01, any, digital, "State Asserted"},
    {1, 0x04, 0x00, any, digital, "Predictive Failure Deasserted"},
    {1, 0x04, 0x01, any, digital, "Predictive Failure Asserted"},
    {1, 0x05, 0x00, any, digital, "Limit Not Exceeded"},
    {1, 0x05, 0x01, any, digital, "Limit Exceeded"},
    {1, 0x06, 0x00, any, digital, "Performance Met"},
    {1, 0x06, 0x01, any, digital, "Performance Lags"},
    {1, 0x07, 0x00, any, severity, "Transition to OK"},
    {1, 0x07, 0x01, any, severity, "Transition to Non-Critical from OK"},
    {1, 0x07, 0x02, any, severity, "Transition to Critical from less severe"},
    {1, 0x07, 0x03, any, severity,
     "Transition to Non-recoverable from less severe"},
    {1, 0x07, 0x04, any, severity,
     "Transition to Non-Critical from more severe"},
    {1, 0x07, 0x05, any, severity,
     "Transition to Critical from Non-recoverable"},
    {1, 0x07, 0x06, any, severity, "Transition to Non-recoverable"},
    {1, 0x07, 0x07, any, severity, "Monitor"},
    {1, 0x07, 0x08, any, severity, "Informational"},
    {1, 0x08, 0x00, any, availability, "Device Removed / Device Absent"},
    {1, 0x08, 0x01, any, availability, "Device Inserted / Device Present"},
    {1, 0x09, 0x00, any, availability, "Device Disabled"},
    {1, 0x09, 0x01, any, availability, "Device Enabled"},
    {1, 0x0a, 0x00, any, availability, "Transition to Running"},
    {1, 0x0a, 0x01, any, availability, "Transition to In Test"},
    {1, 0x0a, 0x02, any, availability, "Transition to Power Off"},
    {1, 0x0a, 0x03, any, availability, "Transition to On Line"},
    {1, 0x0a, 0x04, any, availability, "Transition to Off Line"},
    {1, 0x0a, 0x05, any, availability, "Transition to Off Duty"},
    {1, 0x0a, 0x06, any, availability, "Transition to Degraded"},
    {1, 0x0a, 0x07, any, availability, "Transition to Power Save"},
    {1, 0x0a, 0x08, any, availability, "Install Error"},
    {1, 0x0b, 0x00, any, redundancy, "Fully Redundant"},
    {1, 0x0b, 0x01, any, redundancy, "Redundancy Lost"},
    {1, 0x0b, 0x02, any, redundancy, "Redundancy Degraded"},
    {1, 0x0b, 0x03, any, redundancy,
     "Non-redundant: Sufficient Resources from Redundant"},
    {1, 0x0b, 0x04, any, redundancy,
     "Non-redundant: Sufficient Resources from Insufficient Resources"},
    {1, 0x0b, 0x05, any, redundancy, "Non-redundant: Insufficient Resources"},
    {1, 0x0b, 0x06, any, redundancy,
     "Redundancy Degraded from Fully Redundant"},
    {1, 0x0b, 0x07, any, redundancy, "Redundancy Degraded from Non-redundant"},
    {1, 0x0c, 0x00, any, devicePower, "D0 Power State"},
    {1, 0x0c, 0x01, any, devicePower, "D1 Power State"},
    {1, 0x0c, 0x02, any, devicePower, "D2 Power State"},
    {1, 0x0c, 0x03, any, devicePower, "D3 Power State"},
    {1, 0x17, 0x00, any, addInCard, "Device Removed / Device Absent"},
    {1, 0x17, 0x01, any, addInCard, "Device Inserted / Device Present"},
    {1, 0x1b, 0x00, any, cable, "Cable/Interconnect is connected"},
    {1, 0x1b, 0x01, any, cable,
     "Configuration Error: Incorrect cable connected"},
    {2, 0x01, 0x00, any, temperature, ""},
    {2, 0x02, 0x00, any, voltage, ""},
    {2, 0x03, 0x00, any, current, ""},
    {2, 0x04, 0x00, any, fan, ""},
    {2, 0x05, 0x00, any, physicalSecurity, "General Chassis Intrusion"},
    {2, 0x05, 0x01, any, physicalSecurity, "Drive Bay Intrusion"},
    {2, 0x05, 0x02, any, physicalSecurity, "I/O Card Area Intrusion"},
    {2, 0x05, 0x03, any, physicalSecurity, "Processor Area Intrusion"},
    {2, 0x05, 0x04, any, physicalSecurity, "LAN Leash Lost"},
    {2, 0x05, 0x05, any, physicalSecurity, "Unauthorized Dock"},
    {2, 0x05, 0x06, any, physicalSecurity, "FAN Area Intrusion"},
    {2, 0x06, 0x00, any, platformSecurity, "Secure Mode Violation Attempt"},
    {2, 0x06, 0x01, any, platformSecurity,
     "Pre-boot Password Violation: User Password"},
    {2, 0x06, 0x02, any, platformSecurity,
     "Pre-boot Password Violation: Setup Password"},
    {2, 0x06, 0x03, any, platformSecurity,
     "Pre-boot Password Violation: Network Boot Password"},
    {2, 0x06, 0x04, any, platformSecurity, "Other Pre-boot Password Violation"},
    {2, 0x06, 0x05, any, platformSecurity,
     "Out-of-band Access Password Violation"},
    {2, 0x07, 0x00, any, processor, "IERR"},
    {2, 0x07, 0x01, any, processor, "Thermal Trip"},
    {2, 0x07, 0x02, any, processor, "FRB1/BIST Failure"},
    {2, 0x07, 0x03, any, processor, "FRB2/Hang in POST Failure"},
    {2, 0x07, 0x04, any, processor,
     "FRB3/Processor Startup/Initialization Failure"},
    {2, 0x07, 0x05, any, processor, "Configuration Error"},
    {2, 0x07, 0x06, any, processor, "SM BIOS Uncorrectable CPU-complex Error"},
    {2, 0x07, 0x07, any, processor, "Processor Presence Detected"},
    {2, 0x07, 0x08, any, processor, "Processor Disabled"},
    {2, 0x07, 0x09, any, processor, "Terminator Presence Detected"},
    {2, 0x07, 0x0a, any, processor, "Processor Automatically Throttled"},
    {2, 0x08, 0x00, any, powerSupply, "Presence Detected"},
    {2, 0x08, 0x01, any, powerSupply, "Power Supply Failure Detected"},
    {2, 0x08, 0x02, any, powerSupply, "Predictive Failure"},
    {2, 0x08, 0x03, any, powerSupply, "Power Supply Input Lost (AC/DC)"},
    {2, 0x08, 0x04, any, powerSupply,
     "Power Supply Input Lost or Out-of-Range"},
    {2, 0x08, 0x05, any, powerSupply,
     "Power Supply Input Out-of-Range, but Present"},
    {2, 0x08, 0x06, 0x00, powerSupply, "Config Error: Vendor Mismatch"},
    {2, 0x08, 0x06, 0x01, powerSupply, "Config Error: Revision Mismatch"},
    {2, 0x08, 0x06, 0x02, powerSupply, "Config Error: Processor Missing"},
    {2, 0x08, 0x07, any, powerSupply,
     "Power Supply Inactive (in standby state)"},
    {2, 0x09, 0x00, any, powerUnit, "Power Off / Power Down"},
    {2, 0x09, 0x01, any, powerUnit, "Power Cycle"},
    {2, 0x09, 0x02, any, powerUnit, "240VA Power Down"},
    {2, 0x09, 0x03, any, powerUnit, "Interlock Power Down"},
    {2, 0x09, 0x04, any, powerUnit, "AC Lost / Power Input Lost"},
    {2, 0x09, 0x05, any, powerUnit, "Soft Power Control Failure"},
    {2, 0x09, 0x06, any, powerUnit, "Power Unit Failure Detected"},
    {2, 0x09, 0x07, any, powerUnit, "Predictive Failure"},
    {2, 0x0a, 0x00, any, coolingDevice, ""},
    {2, 0x0b, 0x00, any, otherUnits, ""},
    {2, 0x0c, 0x00, any, memory,
     "Correctable ECC / Other Correctable Memory Error"},
    {2, 0x0c, 0x01, any, memory,
     "Uncorrectable ECC / Other Uncorrectable Memory Error"},
    {2, 0x0c, 0x02, any, memory, "Parity"},
    {2, 0x0c, 0x03, any, memory, "Memory Scrub Failed"},
    {2, 0x0c, 0x04, any, memory, "Memory Device Disabled"},
    {2, 0x0c, 0x05, any, memory,
     "Correctable ECC / Other Memory Error Logging Limit Reached"},
    {2, 0x0c, 0x06, any, memory, "Presence Detected"},
    {2, 0x0c, 0x07, any, memory, "Configuration Error"},
    {2, 0x0c, 0x08, any, memory, "Spare"},
    {2, 0x0c, 0x09, any, memory, "Memory Automatically Throttled"},
    {2, 0x0d, 0x00, any, driveSlot, "Drive Presence"},
    {2, 0x0d, 0x01, any, driveSlot, "Drive Fault"},
    {2, 0x0d, 0x02, any, driveSlot, "Predictive Failure"},
    {2, 0x0d, 0x03, any, driveSlot, "Hot Spare"},
    {2, 0x0d, 0x04, any, driveSlot,
     "Consistency Check / Parity Check in Progress"},
    {2, 0x0d, 0x05, any, driveSlot, "In Critical Array"},
    {2, 0x0d, 0x06, any, driveSlot, "In Failed Array"},
    {2, 0x0d, 0x07, any, driveSlot, "Rebuild/Remap in Progress"},
    {2, 0x0d, 0x08, any, driveSlot, "Rebuild/Remap Aborted"},
    {2, 0x0e, 0x00, any, memoryResize, ""},
    {2, 0x0f, 0x00, 0x00, firmwareError, "Unspecified"},
    {2, 0x0f, 0x00, 0x01, firmwareError, "No system memory installed"},
    {2, 0x0f, 0x00, 0x02, firmwareError, "No usable system memory"},
    {2, 0x0f, 0x00, 0x03, firmwareError,
     "Unrecoverable hard-disk/ATAPI/IDE device failure"},
    {2, 0x0f, 0x00, 0x04, firmwareError, "Unrecoverable system-board failure"},
    {2, 0x0f, 0x00, 0x05, firmwareError,
     "Unrecoverable diskette subsystem failure"},
    {2, 0x0f, 0x00, 0x06, firmwareError,
     "Unrecoverable hard-disk controller failure"},
    {2, 0x0f, 0x00, 0x07, firmwareError,
     "Unrecoverable PS/2 or USB keyboard failure"},
    {2, 0x0f, 0x00, 0x08, firmwareError, "Removable boot media not found"},
    {2, 0x0f, 0x00, 0x09, firmwareError,
     "Unrecoverable video controller failure"},
    {2, 0x0f, 0x00, 0x0a, firmwareError, "No video device detected"},
    {2, 0x0f, 0x00, 0x0b, firmwareError,
     "Firmware (BIOS) ROM corruption detected"},
    {2, 0x0f, 0x00, 0x0c, firmwareError, "CPU voltage mismatch"},
    {2, 0x0f, 0x00, 0x0d, firmwareError, "CPU speed matching failure"},
    {2, 0x0f, 0x00, any, firmwareError, "Unspecified"},
    {2, 0x0f, 0x01, 0x00, firmwareHang, "Unspecified"},
    {2, 0x0f, 0x01, 0x01, firmwareHang, "Memory initialization"},
    {2, 0x0f, 0x01, 0x02, firmwareHang, "Hard-disk initialization"},
    {2, 0x0f, 0x01, 0x03, firmwareHang,
     "Secondary processor(s) initialization"},
    {2, 0x0f, 0x01, 0x04, firmwareHang, "User authentication"},
    {2, 0x0f, 0x01, 0x05, firmwareHang, "User-initiated system setup"},
    {2, 0x0f, 0x01, 0x06, firmwareHang, "USB resource configuration"},
    {2, 0x0f, 0x01, 0x07, firmwareHang, "PCI resource configuration"},
    {2, 0x0f, 0x01, 0x08, firmwareHang, "Option ROM initialization"},
    {2, 0x0f, 0x01, 0x09, firmwareHang, "Video initialization"},
    {2, 0x0f, 0x01, 0x0a, firmwareHang, "Cache initialization"},
    {2, 0x0f, 0x01, 0x0b, firmwareHang, "SM Bus initialization"},
    {2, 0x0f, 0x01, 0x0c, firmwareHang, "Keyboard controller initialization"},
    {2, 0x0f, 0x01, 0x0d, firmwareHang, "Management controller initialization"},
    {2, 0x0f, 0x01, 0x0e, firmwareHang, "Docking station attachment"},
    {2, 0x0f, 0x01, 0x0f, firmwareHang, "Enabling docking station"},
    {2, 0x0f, 0x01, 0x10, firmwareHang, "Docking station ejection"},
    {2, 0x0f, 0x01, 0x11, firmwareHang, "Disabling docking station"},
    {2, 0x0f, 0x01, 0x12, firmwareHang,
     "Calling operating system wake-up vector"},
    {2, 0x0f, 0x01, 0x13, firmwareHang,
     "Starting operating system boot process"},
    {2, 0x0f, 0x01, 0x14, firmwareHang,
     "Baseboard or motherboard initialization"},
    {2, 0x0f, 0x01, 0x15, firmwareHang, "Reserved"},
    {2, 0x0f, 0x01, 0x16, firmwareHang, "Floppy initialization"},
    {2, 0x0f, 0x01, 0x17, firmwareHang, "Keyboard test"},
    {2, 0x0f, 0x01, 0x18, firmwareHang, "Pointing device test"},
    {2, 0x0f, 0x01, 0x19, firmwareHang, "Primary processor initialization"},
    {2, 0x0f, 0x01, any, firmwareHang, "Unspecified"},
    {2, 0x0f, 0x02, 0x00, firmwareProgress, "Unspecified"},
    {2, 0x0f, 0x02, 0x01, firmwareProgress, "Memory initialization"},
    {2, 0x0f, 0x02, 0x02, firmwareProgress, "Hard-disk initialization"},
    {2, 0x0f, 0x02, 0x03, firmwareProgress,
     "Secondary processor(s) initialization"},
    {2, 0x0f, 0x02, 0x04, firmwareProgress, "User authentication"},
    {2, 0x0f, 0x02, 0x05, firmwareProgress, "User-initiated system setup"},
    {2, 0x0f, 0x02, 0x06, firmwareProgress, "USB resource configuration"},
    {2, 0x0f, 0x02, 0x07, firmwareProgress, "PCI resource configuration"},
    {2, 0x0f, 0x02, 0x08, firmwareProgress, "Option ROM initialization"},
    {2, 0x0f, 0x02, 0x09, firmwareProgress, "Video initialization"},
    {2, 0x0f, 0x02, 0x0a, firmwareProgress, "Cache initialization"},
    {2, 0x0f, 0x02, 0x0b, firmwareProgress, "SM Bus initialization"},
    {2, 0x0f, 0x02, 0x0c, firmwareProgress,
     "Keyboard controller initialization"},
    {2, 0x0f, 0x02, 0x0d, firmwareProgress,
     "Management controller initialization"},
    {2, 0x0f, 0x02, 0x0e, firmwareProgress, "Docking station attachment"},
    {2, 0x0f, 0x02, 0x0f, firmwareProgress, "Enabling docking station"},
    {2, 0x0f, 0x02, 0x10, firmwareProgress, "Docking station ejection"},
    {2, 0x0f, 0x02, 0x11, firmwareProgress, "Disabling docking station"},
    {2, 0x0f, 0x02, 0x12, firmwareProgress,
     "Calling operating system wake-up vector"},
    {2, 0x0f, 0x02, 0x13, firmwareProgress,
     "Starting operating system boot process"},
    {2, 0x0f, 0x02, 0x14, firmwareProgress,
     "Baseboard or motherboard initialization"},
    {2, 0x0f, 0x02, 0x15, firmwareProgress, "Reserved"},
    {2, 0x0f, 0x02, 0x16, firmwareProgress, "Floppy initialization"},
    {2, 0x0f, 0x02, 0x17, firmwareProgress, "Keyboard test"},
    {2, 0x0f, 0x02, 0x18, firmwareProgress, "Pointing device test"},
    {2, 0x0f, 0x02, 0x19, firmwareProgress, "Primary processor initialization"},
    {2, 0x0f, 0x02, any, firmwareProgress, "Unspecified"},
    {2, 0x10, 0x00, any, loggingDisabled,
     "Correctable Memory Error Logging Disabled"},
    {2, 0x10, 0x01, any, loggingDisabled, "Event Type Logging Disabled"},
    {2, 0x10, 0x02, any, loggingDisabled, "Log Area Reset/Cleared"},
    {2, 0x10, 0x03, any, loggingDisabled, "All Event Logging Disabled"},
    {2, 0x10, 0x04, any, loggingDisabled, "SEL Full"},
    {2, 0x10, 0x05, any, loggingDisabled, "SEL Almost Full"},
    {2, 0x11, 0x00, any, watchdog1, "BIOS Watchdog Reset"},
    {2, 0x11, 0x01, any, watchdog1, "OS Watchdog Reset"},
    {2, 0x11, 0x02, any, watchdog1, "OS Watchdog Shut Down"},
    {2, 0x11, 0x03, any, watchdog1, "OS Watchdog Power Down"},
    {2, 0x11, 0x04, any, watchdog1, "OS Watchdog Power Cycle"},
    {2, 0x11, 0x05, any, watchdog1, "OS Watchdog NMI / Diagnostic Interrupt"},
    {2, 0x11, 0x06, any, watchdog1, "OS Watchdog Expired, status only"},
    {2, 0x11, 0x07, any, watchdog1,
     "OS Watchdog Pre-timeout Interrupt, non-NMI"},
    {2, 0x12, 0x00, any, systemEvent, "System Reconfigured"},
    {2, 0x12, 0x01, any, systemEvent, "OEM System Boot Event"},
    {2, 0x12, 0x02, any, systemEvent, "Undetermined System Hardware Failure"},
    {2, 0x12, 0x03, any, systemEvent, "Entry Added to Auxiliary Log"},
    {2, 0x12, 0x04, any, systemEvent, "PEF Action"},
    {2, 0x12, 0x05, any, systemEvent, "Timestamp Clock Synch"},
    {2, 0x13, 0x00, any, criticalInterrupt,
     "Front Panel NMI / Diagnostic Interrupt"},
    {2, 0x13, 0x01, any, criticalInterrupt, "Bus Timeout"},
    {2, 0x13, 0x02, any, criticalInterrupt, "I/O Channel Check NMI"},
    {2, 0x13, 0x03, any, criticalInterrupt, "Software NMI"},
    {2, 0x13, 0x04, any, criticalInterrupt, "PCI PERR"},
    {2, 0x13, 0x05, any, criticalInterrupt, "PCI SERR"},
    {2, 0x13, 0x06, any, criticalInterrupt, "EISA Fail Safe Timeout"},
    {2, 0x13, 0x07, any, criticalInterrupt, "Bus Correctable Error"},
    {2, 0x13, 0x08, any, criticalInterrupt, "Bus Uncorrectable Error"},
    {2, 0x13, 0x09, any, criticalInterrupt, "Fatal NMI"},
    {2, 0x13, 0x0a, any, criticalInterrupt, "Bus Fatal Error"},
    {2, 0x14, 0x00, any, button, "Power Button Pressed"},
    {2, 0x14, 0x01, any, button, "Sleep Button Pressed"},
    {2, 0x14, 0x02, any, button, "Reset Button Pressed"},
    {2, 0x14, 0x03, any, button, "FRU Latch Open"},
    {2, 0x14, 0x04, any, button, "FRU Service Request Button"},
    {2, 0x15, 0x00, any, module, ""},
    {2, 0x16, 0x00, any, microcontroller, ""},
    {2, 0x17, 0x00, any, addInCard, ""},
    {2, 0x18, 0x00, any, chassis, ""},
    {2, 0x19, 0x00, any, chipSet, "Soft Power Control Failure"},
    {2, 0x1a, 0x00, any, otherFru, ""},
    {2, 0x1b, 0x00, any, cable, "Cable/Interconnect is connected"},
    {2, 0x1b, 0x01, any, cable,
     "Configuration Error: Incorrect cable connected"},
    {2, 0x1c, 0x00, any, terminator, ""},
    {2, 0x1d, 0x00, any, bootInitiated, "Initiated by Power Up"},
    {2, 0x1d, 0x01, any, bootInitiated, "Initiated by Hard Reset"},
    {2, 0x1d, 0x02, any, bootInitiated, "Initiated by Warm Reset"},
    {2, 0x1d, 0x03, any, bootInitiated, "User Requested PXE Boot"},
    {2, 0x1d, 0x04, any, bootInitiated, "Automatic Boot to Diagnostic"},
    {2, 0x1d, 0x05, any, bootInitiated,
     "OS / Run-time Software Initiated Hard Reset"},
    {2, 0x1d, 0x06, any, bootInitiated,
     "OS / Run-time Software Initiated Warm Reset"},
    {2, 0x1d, 0x07, any, bootInitiated, "System Restart"},
    {2, 0x1e, 0x00, any, bootError, "No Bootable Media"},
    {2, 0x1e, 0x01, any, bootError, "Non-bootable Diskette Left in Drive"},
    {2, 0x1e, 0x02, any, bootError, "PXE Server Not Found"},
    {2, 0x1e, 0x03, any, bootError, "Invalid Boot Sector"},
    {2, 0x1e, 0x04, any, bootError,
     "Timeout Waiting for Selection of Boot Source"},
    {2, 0x1f, 0x00, any, osBoot, "A: Boot Completed"},
    {2, 0x1f, 0x01, any, osBoot, "C: Boot Completed"},
    {2, 0x1f, 0x02, any, osBoot, "PXE Boot Completed"},
    {2, 0x1f, 0x03, any, osBoot, "Diagnostic Boot Completed"},
    {2, 0x1f, 0x04, any, osBoot, "CD-ROM Boot Completed"},
    {2, 0x1f, 0x05, any, osBoot, "ROM Boot Completed"},
    {2, 0x1f, 0x06, any, osBoot, "Boot Completed, boot device not specified"},
    {2, 0x20, 0x00, any, osStop, "Critical Stop during OS Load/Initialization"},
    {2, 0x20, 0x01, any, osStop, "Run-time Critical Stop"},
    {2, 0x20, 0x02, any, osStop, "OS Graceful Stop"},
    {2, 0x20, 0x03, any, osStop, "OS Graceful Shutdown"},
    {2, 0x20, 0x04, any, osStop, "Soft Shutdown Initiated by PEF"},
    {2, 0x20, 0x05, any, osStop, "Agent Not Responding"},
    {2, 0x21, 0x00, any, slot, "Fault Status Asserted"},
    {2, 0x21, 0x01, any, slot, "Identify Status Asserted"},
    {2, 0x21, 0x02, any, slot, "Device Installed/Attached"},
    {2, 0x21, 0x03, any, slot, "Ready for Device Installation"},
    {2, 0x21, 0x04, any, slot, "Ready for Device Removal"},
    {2, 0x21, 0x05, any, slot, "Slot Power is Off"},
    {2, 0x21, 0x06, any, slot, "Device Removal Request"},
    {2, 0x21, 0x07, any, slot, "Interlock Asserted"},
    {2, 0x21, 0x08, any, slot, "Slot is Disabled"},
    {2, 0x21, 0x09, any, slot, "Slot Holds Spare Device"},
    {2, 0x22, 0x00, any, systemPower, "S0/G0 working"},
    {2, 0x22, 0x01, any, systemPower,
     "S1 sleeping, processor and hardware context maintained"},
    {2, 0x22, 0x02, any, systemPower, "S2 sleeping, processor context lost"},
    {2, 0x22, 0x03, any, systemPower,
     "S3 sleeping, context lost, memory retained"},
    {2, 0x22, 0x04, any, systemPower,
     "S4 non-volatile sleep / suspend-to-disk"},
    {2, 0x22, 0x05, any, systemPower, "S5/G2 soft-off"},
    {2, 0x22, 0x06, any, systemPower,
     "S4/S5 soft-off, state cannot be determined"},
    {2, 0x22, 0x07, any, systemPower, "G3 mechanical off"},
    {2, 0x22, 0x08, any, systemPower, "Sleeping in an S1, S2 or S3 state"},
    {2, 0x22, 0x09, any, systemPower, "G1 sleeping"},
    {2, 0x22, 0x0a, any, systemPower, "S5 entered by override"},
    {2, 0x22, 0x0b, any, systemPower, "Legacy ON state"},
    {2, 0x22, 0x0c, any, systemPower, "Legacy OFF state"},
    {2, 0x22, 0x0e, any, systemPower, "Unknown"},
    {2, 0x23, 0x00, any, watchdog2, "Timer Expired, status only"},
    {2, 0x23, 0x01, any, watchdog2, "Hard Reset"},
    {2, 0x23, 0x02, any, watchdog2, "Power Down"},
    {2, 0x23, 0x03, any, watchdog2, "Power Cycle"},
    {2, 0x23, 0x04, any, watchdog2, "Reserved"},
    {2, 0x23, 0x05, any, watchdog2, "Reserved"},
    {2, 0x23, 0x06, any, watchdog2, "Reserved"},
    {2, 0x23, 0x07, any, watchdog2, "Reserved"},
    {2, 0x23, 0x08, any, watchdog2, "Timer Interrupt"},
    {2, 0x24, 0x00, any, platformAlert, "Platform Generated Page"},
    {2, 0x24, 0x01, any, platformAlert, "Platform Generated LAN Alert"},
    {2, 0x24, 0x02, any, platformAlert, "Platform Event Trap Generated"},
    {2, 0x24, 0x03, any, platformAlert, "Platform Generated SNMP Trap"},
    {2, 0x25, 0x00, any, entityPresence, "Entity Present"},
    {2, 0x25, 0x01, any, entityPresence, "Entity Absent"},
    {2, 0x25, 0x02, any, entityPresence, "Entity Disabled"},
    {2, 0x26, 0x00, any, monitorAsic, ""},
    {2, 0x27, 0x00, any, lan, "LAN Heartbeat Lost"},
    {2, 0x27, 0x01, any, lan, "LAN Heartbeat"},
    {2, 0x28, 0x00, any, managementHealth,
     "Sensor Access Degraded or Unavailable"},
    {2, 0x28, 0x01, any, managementHealth,
     "Controller Access Degraded or Unavailable"},
    {2, 0x28, 0x02, any, managementHealth, "Management Controller Off-line"},
    {2, 0x28, 0x03, any, managementHealth, "Management Controller Unavailable"},
    {2, 0x28, 0x04, any, managementHealth, "Sensor Failure"},
    {2, 0x28, 0x05, any, managementHealth, "FRU Failure"},
    {2, 0x29, 0x00, any, battery, "Battery Low (predictive failure)"},
    {2, 0x29, 0x01, any, battery, "Battery Failed"},
    {2, 0x29, 0x02, any, battery, "Battery Presence Detected"},
    {2, 0x2b, 0x00, any, versionChange, "Hardware Change Detected"},
    {2, 0x2b, 0x01, any, versionChange, "Firmware or Software Change Detected"},
    {2, 0x2b, 0x02, any, versionChange, "Hardware Incompatibility Detected"},
    {2, 0x2b, 0x03, any, versionChange,
     "Firmware or Software Incompatibility Detected"},
    {2, 0x2b, 0x04, any, versionChange,
     "Invalid or Unsupported Hardware Version"},
    {2, 0x2b, 0x05, any, versionChange,
     "Invalid or Unsupported Firmware or Software Version"},
    {2, 0x2b, 0x06, any, versionChange, "Hardware Change Successful"},
    {2, 0x2b, 0x07, any, versionChange,
     "Firmware or Software Change Successful"},
    {2, 0x2c, 0x00, any, fruState, "FRU Not Installed"},
    {2, 0x2c, 0x01, any, fruState,
     "FRU Inactive (in standby or hot spare state)"},
    {2, 0x2c, 0x02, any, fruState, "FRU Activation Requested"},
    {2, 0x2c, 0x03, any, fruState, "FRU Activation in Progress"},
    {2, 0x2c, 0x04, any, fruState, "FRU Active"},
    {2, 0x2c, 0x05, any, fruState, "FRU Deactivation Requested"},
    {2, 0x2c, 0x06, any, fruState, "FRU Deactivation in Progress"},
    {2, 0x2c, 0x07, any, fruState, "FRU Communication Lost"},
    {2, 0xf0, 0x00, any, fruHotSwap, "Transition to M0"},
    {2, 0xf0, 0x01, any, fruHotSwap, "Transition to M1"},
    {2, 0xf0, 0x02, any, fruHotSwap, "Transition to M2"},
    {2, 0xf0, 0x03, any, fruHotSwap, "Transition to M3"},
    {2, 0xf0, 0x04, any, fruHotSwap, "Transition to M4"},
    {2, 0xf0, 0x05, any, fruHotSwap, "Transition to M5"},
    {2, 0xf0, 0x06, any, fruHotSwap, "Transition to M6"},
    {2, 0xf0, 0x07, any, fruHotSwap, "Transition to M7"},
    {2, 0xf1, 0x00, any, ipmb0, "IPMB-A disabled, IPMB-B disabled"},
    {2, 0xf1, 0x01, any, ipmb0, "IPMB-A enabled, IPMB-B disabled"},
    {2, 0xf1, 0x02, any, ipmb0, "IPMB-A disabled, IPMB-B enabled"},
    {2, 0xf1, 0x03, any, ipmb0, "IPMB-A enabled, IPMP-B enabled"},
    {2, 0xf2, 0x00, any, moduleHotSwap, "Module Handle Closed"},
    {2, 0xf2, 0x01, any, moduleHotSwap, "Module Handle Opened"},
    {2, 0xf2, 0x02, any, moduleHotSwap, "Quiesced"},
}};

// States that came into the standard with later errata; records of events are
// not described by them.
constexpr std::array<EventText, laterStateCount> laterStates{{
    {2, 0x07, 0x0b, any, processor, "Machine Check Exception (Uncorrectable)"},
    {2, 0x07, 0x0c, any, processor, "Correctable Machine Check Error"},
    {2, 0x0c, 0x0a, any, memory, "Critical Overtemperature"},
    {2, 0x10, 0x06, any, loggingDisabled,
     "Correctable Machine Check Error Logging Disabled"},
    {2, 0x13, 0x0b, any, criticalInterrupt, "Bus Degraded"},
    {2, 0x19, 0x01, any, chipSet, "Thermal Trip"},
    {2, 0x1f, 0x07, any, osBoot, "Base OS/Hypervisor Installation Started"},
    {2, 0x1f, 0x08, any, osBoot, "Base OS/Hypervisor Installation Completed"},
    {2, 0x1f, 0x09, any, osBoot, "Base OS/Hypervisor Installation Aborted"},
    {2, 0x1f, 0x0a, any, osBoot, "Base OS/Hypervisor Installation Failed"},
    {2, 0x2a, 0x00, any, sessionAudit, "Session Activated"},
    {2, 0x2a, 0x01, any, sessionAudit, "Session Deactivated"},
    {2, 0x2a, 0x02, any, sessionAudit, "Invalid Username or Password"},
    {2, 0x2a, 0x03, any, sessionAudit, "Invalid Password Disable"},
    {2, 0xf2, 0x03, any, moduleHotSwap, "Backend Power Failure"},
    {2, 0xf2, 0x04, any, moduleHotSwap, "Backend Power Shut Down"},
}};

namespace
{

struct Count
{
    uint8_t eventClass;
    uint8_t type;
    size_t rows;
    const char* name;
};

constexpr Count counts[] = {
    {1, 0x01, 12, threshold},
    {1, 0x02, 3, usage},
    {1, 0x03, 2, digital},
    {1, 0x04, 2, digital},
    {1, 0x05, 2, digital},
    {1, 0x06, 2, digital},
    {1, 0x07, 9, severity},
    {1, 0x08, 2, availability},
    {1, 0x09, 2, availability},
    {1, 0x0a, 9, availability},
    {1, 0x0b, 8, redundancy},
    {1, 0x0c, 4, devicePower},
    {1, 0x17, 2, addInCard},
    {1, 0x1b, 2, cable},
    {2, 0x01, 1, temperature},
    {2, 0x02, 1, voltage},
    {2, 0x03, 1, current},
    {2, 0x04, 1, fan},
    {2, 0x05, 7, physicalSecurity},
    {2, 0x06, 6, platformSecurity},
    {2, 0x07, 11, processor},
    {2, 0x08, 10, powerSupply},
    {2, 0x09, 8, powerUnit},
    {2, 0x0a, 1, coolingDevice},
    {2, 0x0b, 1, otherUnits},
    {2, 0x0c, 10, memory},
    {2, 0x0d, 9, driveSlot},
    {2, 0x0e, 1, memoryResize},
    {2, 0x0f, 15, firmwareError},
    {2, 0x0f, 27, firmwareHang},
    {2, 0x0f, 27, firmwareProgress},
    {2, 0x10, 6, loggingDisabled},
    {2, 0x11, 8, watchdog1},
    {2, 0x12, 6, systemEvent},
    {2, 0x13, 11, criticalInterrupt},
    {2, 0x14, 5, button},
    {2, 0x15, 1, module},
    {2, 0x16, 1, microcontroller},
    {2, 0x17, 1, addInCard},
    {2, 0x18, 1, chassis},
    {2, 0x19, 1, chipSet},
    {2, 0x1a, 1, otherFru},
    {2, 0x1b, 2, cable},
    {2, 0x1c, 1, terminator},
    {2, 0x1d, 8, bootInitiated},
    {2, 0x1e, 5, bootError},
    {2, 0x1f, 7, osBoot},
    {2, 0x20, 6, osStop},
    {2, 0x21, 10, slot},
    {2, 0x22, 14, systemPower},
    {2, 0x23, 9, watchdog2},
    {2, 0x24, 4, platformAlert},
    {2, 0x25, 3, entityPresence},
    {2, 0x26, 1, monitorAsic},
    {2, 0x27, 2, lan},
    {2, 0x28, 6, managementHealth},
    {2, 0x29, 3, battery},
    {2, 0x2b, 8, versionChange},
    {2, 0x2c, 8, fruState},
    {2, 0xf0, 8, fruHotSwap},
    {2, 0xf1, 4, ipmb0},
    {2, 0xf2, 3, moduleHotSwap},
};

template <typename Rows>
constexpr bool ascending(const Rows& rows)
{
    for (size_t i = 1; i < rows.size(); ++i)
        if (rows[i - 1].code() >= rows[i].code())
            return false;
    return true;
}

// Rows of one name stand together, so counting them in order meets every row.
constexpr bool countsHold()
{
    size_t at = 0;
    for (const Count& count : counts)
        for (size_t i = 0; i < count.rows; ++i, ++at)
            if (at >= eventTextCount ||
                ipmi_sel_data[at].eventClass != count.eventClass ||
                ipmi_sel_data[at].type != count.type ||
                ipmi_sel_data[at].name != count.name)
                return false;
    return at == eventTextCount;
}

constexpr size_t rowsOfClass(unsigned eventClass)
{
    size_t rows = 0;
    for (const EventText& row : ipmi_sel_data)
        rows += row.eventClass == eventClass;
    return rows;
}

static_assert(ascending(ipmi_sel_data) && ascending(laterStates));
static_assert(countsHold());
static_assert(rowsOfClass(EventText::generic) == 61);
static_assert(rowsOfClass(EventText::sensorSpecific) == 291);

constexpr EventTypeRow rowOf(const EventText& text)
{
    const bool isThreshold =
        text.eventClass == EventText::generic && text.type == 0x01;
    return {text.type,  text.offset,
            text.data3, isThreshold ? EventTypeRow::thresholdClass : uint8_t{0},
            text.name,  text.description[0] ? text.description : nullptr};
}

template <size_t count>
constexpr size_t copyRows(std::array<EventTypeRow, count>& rows, size_t at,
                          uint8_t eventClass)
{
    for (const EventText& text : ipmi_sel_data)
        if (text.eventClass == eventClass)
            rows[at++] = rowOf(text);
    return at;
}

constexpr auto genericRows()
{
    std::array<EventTypeRow, 62> rows{};
    copyRows(rows, 0, EventText::generic);
    return rows;
}

constexpr auto specificRows()
{
    std::array<EventTypeRow, 294> rows{};
    rows[0] = {0x00, 0, any, 0, "Reserved", nullptr};
    const size_t end = copyRows(rows, 1, EventText::sensorSpecific);
    rows[end] = {0xc0, 0, any, 0, "OEM", nullptr};
    return rows;
}

constexpr auto codesOfTexts()
{
    std::array<uint32_t, eventTextCount> codes{};
    for (size_t row = 0; row < eventTextCount; ++row)
        codes[row] = ipmi_sel_data[row].code();
    return codes;
}

constexpr auto codes = codesOfTexts();
constexpr auto hash = HashMaker<eventTextCount>{codes}.make();

constexpr bool everyCodeFindsItsRow()
{
    for (size_t row = 0; row < eventTextCount; ++row)
        if (rowOfCode(hash.g, hash.v, codes[row]) != row)
            return false;
    return true;
}
static_assert(everyCodeFindsItsRow());

} // namespace

constexpr std::array<EventTypeRow, 62> generic_event_types = genericRows();
constexpr std::array<EventTypeRow, 294> sensor_specific_types = specificRows();
static_assert(!generic_event_types[61].name &&
              generic_event_types[60].code == 0x1b);
static_assert(!sensor_specific_types[293].name &&
              sensor_specific_types[292].code == 0xc0);

constexpr std::array<int32_t, eventTextCount> G_array = hash.g;
constexpr std::array<int32_t, eventTextCount> V_array = hash.v;

} // namespace Ipmi
