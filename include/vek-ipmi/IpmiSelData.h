/// Records of the System Event Log (IPMI v2.0, section 32).
#ifndef VEK_IPMI_IPMISELDATA_H
#define VEK_IPMI_IPMISELDATA_H

#include <cstdint>
#include <string>

namespace Ipmi
{

/// A record as the controller keeps it; all values LS byte first. The fields
/// behind the time are those of an event record (types 02h and 00h); OEM
/// records use their bytes as they like, from E0h on those of the time, too.
struct sel_event_record
{
    uint8_t recordId[2];
    uint8_t recordType;
    uint8_t timeStamp[4];
    uint8_t generatorId[2]; ///< As IpmiIfc::convertToGeneratorId.
    uint8_t evmRevision;    ///< 04h: IPMI v1.5 and v2.0.
    uint8_t sensorType;
    uint8_t sensorNumber;
    uint8_t eventType;  ///< Bit 7: deassertion; event/reading type.
    uint8_t eventData1; ///< Bits 3..0: offset.
    uint8_t eventData2;
    uint8_t eventData3;
};
static_assert(sizeof(sel_event_record) == 16, "bytes alone");

/// One record and the node that it was read from. A value that never changes;
/// threads share it.
///
/// Operations on events answer a neutral value for any record that
/// isSelEventRecord does not call one.
class IpmiSelData
{
public:
    /// @param record copied.
    IpmiSelData(const sel_event_record* record, int node)
        : record_{*record}, node_{node}
    {}

    unsigned short recordId() const;
    /// In decimal; the argument is ignored. "Invalid" for the two ids that no
    /// record can have: 0000h and FFFFh stand for the first and the last one.
    std::string recordId(int) const;
    unsigned char recordType() const { return record_.recordType; }
    /// Record type 02h, or 00h, which some firmware writes for it.
    bool isSelEventRecord() const;
    /// 0 unless it is an event.
    unsigned short getGeneratorId() const;
    /// Seconds since 1970, up to 20000000h since the controller's start;
    /// FFFFFFFFh for a record without a time.
    unsigned messageTimeStamp() const;
    /// Event/reading type; -1 unless it is an event.
    int eventType() const;
    /// CIM PerceivedSeverity of a threshold event: 5 (major) for non-critical,
    /// 6 critical, 7 fatal for non-recoverable thresholds; else 0.
    int severity() const;
    /// CIM AlertType: 5 device, 6 environmental (temperature), 8 security; 0
    /// for OEM event types and unless it is an event.
    int alertType() const;
    /// The sensor's number, if the node has the sensor and it is neither of
    /// entity 00h or 22h nor of type 10h; else 0. Reads the SDR repository
    /// when the node holds no sensors: do not call it while the node may not
    /// be asked.
    unsigned char getSensorNumber() const;
    /// "Assert + Temperature Upper Critical going high"; for event/reading
    /// types 01h to 0Ch and 6Fh of revision 04h and above, else empty.
    std::string caption() const;
    /// The template of recordDataString, for an event; else empty.
    std::string messageFormat() const;
    /// The record's fields in decimal between "*", for an event; else empty.
    /// IPMI_AssertionEvent is "true" for a deassertion, and IANA 1: callers
    /// rely on both. Asks for the sensor's number as getSensorNumber does.
    std::string recordDataString() const;
    /// Always empty.
    std::string description() const { return ""; }

    /// What event data 2 and 3 add, in words: the reading that set off a
    /// threshold event and the threshold, by the sensor's factors if the node
    /// holds the sensor; for discrete events the previous state, and what the
    /// standard defines for the sensor type (IPMI v2.0, tables 29-6 and 42-3);
    /// OEM codes and the bytes of an OEM record in hexadecimal. Empty where the
    /// standard leaves the meaning open. Sends nothing.
    std::string details() const;

    /// The bytes.
    const sel_event_record& record() const { return record_; }

    // Commands to the record's node. @return 0; 1 where the controller
    // answered C1h or CDh; else the completion code, 0xFF without an answer.

    /// Sends Delete SEL Entry without data: callers rely on that command.
    /// @param id the two bytes behind the answer's completion code; 0 when
    ///     there were none. Left alone when the result is 1.
    int reserve(unsigned short& id) const;
    /// Deletes the record of which the id is this one's low byte alone.
    /// Whoever means this very record sends Delete SEL Entry with sendCmd.
    int clear() const;

private:
    sel_event_record record_;
    int node_;
};

} // namespace Ipmi

#endif
