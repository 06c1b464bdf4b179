/// What a short-lived program without a polling thread needs.
///
///     if (IpmiIfcOpenIpmiOpen(0) < 0)
///         return 2;             // errno tells why
///     if (IpmiIfcInitForCLI(0) != 0) {
///         IpmiIfcOpenIpmiClose(0);
///         return 4;
///     }
///     int code = IpmiIfcReadDeviceId(0);
///     ...                       // IpmiIfc::GetBmcFWVersion(), sendCmd, ...
///     IpmiIfcCloseForCLI(0);
///     IpmiIfcOpenIpmiClose(0);
#ifndef VEK_IPMI_IPMICOMMANDLINE_H
#define VEK_IPMI_IPMICOMMANDLINE_H

#include <iosfwd>

#include <vek-ipmi/IpmiSdrRecord.h>
#include <vek-ipmi/IpmiSel.h>

namespace Ipmi
{

/// Opens "/dev/ipmi0". Returns its descriptor, or -1 with errno set.
int IpmiIfcOpenIpmiOpen(int node);
void IpmiIfcOpenIpmiClose(int node);

/// Puts the node into command-line mode on the device as it is open.
/// Returns 0, -1 without a wake-up pipe, -2 when the driver refuses its
/// address.
int IpmiIfcInitForCLI(int node);
void IpmiIfcCloseForCLI(int node);

/// Each sends what it is named after and keeps a good answer for the getters
/// of IpmiIfc. Returns the completion code, 0xFF without an answer.
int IpmiIfcReadDeviceId(int node);
int IpmiIfcReadSelfTest(int node);
int IpmiIfcReadOS_Name(int node);
int IpmiIfcReadOS_Version(int node);

/// A controller, and how the node's own one gets to it (IPMI v2.0, 43.1,
/// bytes 6 and 7).
struct IpmiTarget
{
    uint8_t address; ///< Slave address; 0: the node's own controller.
    uint8_t channel;
    uint8_t lun; ///< Not of the node's own controller, which is asked at 0.
};

/// As IpmiIfc::sendCmd, to another controller. Other threads' exchanges wait
/// until it is over.
int IpmiIfcSendCmdTo(int node, const IpmiTarget& target, uint8_t cmd,
                     uint8_t netfn, uint16_t data_len, uint8_t* data,
                     uint16_t* resp_len, uint8_t* resp_buf);

/// Reads the whole SDR repository, and from it the sensors with their first
/// readings, thresholds and hysteresis, as the polling loop does; for
/// IpmiIfc::getSensors and its like. 0, or -1 when the controller does not
/// tell about its repository; what could be read is there in any case.
int IpmiIfcSdrGetInfo(int node);

/// Reads the records alone, for IpmiIfc::getSdrRecords, and asks no sensor
/// anything. The sensors that were made of earlier ones stay. 0 or -1 as
/// IpmiIfcSdrGetInfo.
int IpmiIfcSdrReadRecords(int node);

/// The same for records of some types alone (IPMI v2.0, table 43-1); of others
/// the headers are asked for, an exchange each.
int IpmiIfcSdrReadRecordsOf(int node, const uint8_t* types, unsigned count);

/// How far any of them, on another thread, has come. Takes no lock.
IpmiSdrProgress IpmiIfcSdrGetProgress(int node);

/// Reads every sensor of IpmiIfc::getSensors again, as the polling loop does:
/// not those that answered CBh or CDh, or timed out several times in a row.
/// IpmiSensor::lastReading tells how it went. 0; -1 for a number without a
/// record.
int IpmiIfcSensorUpdateReading(int node);

/// Reads all FRU devices of which IpmiIfcSdrGetInfo has read the locator
/// records, for IpmiIfc::getFrus. 0; -1 for a number without a record.
int IpmiIfcFruInstantiateAll(int node);

/// Asks for the state of the event log; in command-line mode reads the whole
/// log, for IpmiIfc::getSelData and getSel. No handler is called then.
/// @param count null, or receives the low byte of the number of entries, if
///     the answer has it.
/// @return 0, or -1 when the controller does not tell about its log. What could
///     be read is there in any case; IpmiIfcSelGetProgress tells whether that
///     is all.
int IpmiIfcSelGetInfo(int node, unsigned short* count);

/// How far a read of the log, on another thread, has come. Takes no lock.
IpmiSelProgress IpmiIfcSelGetProgress(int node);

/// Loads the sensor health table from "/etc/sfcb/vek/sensor_health", once in
/// a process; a load that failed is tried again by the next call. Command-line
/// mode does so itself.
void LoadSensorHealthDataFile();

/// The same from a stream, for a program that brings a table of its own: does
/// nothing once a table is loaded. Returns whether one is loaded afterwards.
bool LoadSensorHealthData(std::istream& in);

} // namespace Ipmi

#endif
