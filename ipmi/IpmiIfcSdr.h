/// The SDR repository of a node: information, reservation, headers, records.
///
/// All functions take the node's SDR lock for writing themselves unless they
/// say otherwise, return 0 for success, and -1 for a node without a record,
/// of which they touch nothing.
#ifndef VEK_IPMI_PRIVATE_IPMIIFCSDR_H
#define VEK_IPMI_PRIVATE_IPMIIFCSDR_H

#include <cstdint>
#include <memory>

#include <vek-ipmi/IpmiCommandLine.h>

#include "ipmi/IpmiNode.h"
#include "ipmi/IpmiTransport.h"

namespace Ipmi
{

struct ipmiifc_sensor_reading_list;

/// A record of a node.
struct ipmiifc_sdr_list
{
    ipmiifc_sdr_list* next;
    /// Points back here, unless null.
    ipmiifc_sensor_reading_list* reading;
    uint16_t recordId; ///< Under which it was read.
    uint8_t recordType;
    /// Header included. One byte wide: a record of more than 255 bytes wraps,
    /// and its sensor is made of what is left; callers rely on the width.
    uint8_t totalLength;
    std::unique_ptr<uint8_t[]> bytes;
};

/// A view of the record's bytes.
inline RecordView viewOf(const ipmiifc_sdr_list& entry)
{
    return {entry.bytes.get(), entry.totalLength};
}

constexpr int sdrHeaderSize = 5;

/// Held during a whole refresh, of whichever node.
extern VEK::Mutex sdr_mutex;

/// Frees headers and lists.
void freeRecords(IpmiNode& node) VEK_REQUIRES(node.sdrLock);
void freeHeaders(IpmiNode& node) VEK_REQUIRES(node.sdrLock);

/// Handler of Get SDR Repository Info: reads everything again.
int IpmiIfcRhGetSdrInfo(ipmiifc_resp* resp);

int IpmiIfcSdrReserve(int node);
int IpmiIfcSdrGetAll(int node);
int IpmiIfcSdrGetHeaders(int node);
/// Takes the lock only to look at the reservation.
int IpmiIfcSdrReadRecordId(int node, unsigned short recordId,
                           unsigned char* buffer, unsigned char size);
int IpmiIfcSdrReadAll(int node);
/// Files an entry, which the list then owns, and the copies of a shared
/// record; the caller holds the lock, and keeps the entry of a node without a
/// record.
int IpmiIfcSdrListAdd(int node, ipmiifc_sdr_list* entry);
void IpmiIfcSdrCleanUpHeaders(int node);
int IpmiIfcSdrCleanUpAll(int node);

/// Reservation id of Reserve SDR Repository; 0 for none.
inline uint16_t reservationOf(const IpmiNode& node)
    VEK_REQUIRES_SHARED(node.sdrLock)
{
    return uint16_t(node.sdrReservation[1] | node.sdrReservation[2] << 8);
}

/// A Get SDR request (IPMI v2.0, 33.12) and the answer to it, whose record is
/// used again from one exchange to the next.
class SdrReader
{
public:
    SdrReader(int node, uint16_t reservationId);

    void setReservation(uint16_t reservationId);
    void setPart(uint16_t recordId, uint8_t offset, uint8_t size);
    /// Completion code; below 0 without a response.
    int exchange();
    /// The answer's bytes, completion code first; only after an exchange that
    /// was answered.
    RecordView answer() const { return viewOf(*answer_); }
    int answerLength() const { return answer_->data_len; }

private:
    int node_;
    uint8_t data_[6] = {};
    Response answer_;
};

} // namespace Ipmi

#endif
