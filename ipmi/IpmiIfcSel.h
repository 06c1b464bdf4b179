/// The event log of node 0: information, reservation, records, handlers.
///
/// Whatever node they are given, all functions serve node 0 unless they say
/// otherwise; the number stands in log lines. 0 is success, -1 a failure.
#ifndef VEK_IPMI_PRIVATE_IPMIIFCSEL_H
#define VEK_IPMI_PRIVATE_IPMIIFCSEL_H

#include <cstdint>
#include <memory>

#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiSelData.h>

#include "ipmi/IpmiNode.h"
#include "ipmi/IpmiTransport.h"

namespace Ipmi
{

/// What a read of one record fills.
struct ipmiifc_sel_entry
{
    uint8_t completionCode;
    /// In: the record to read. Out: the one that follows it, FFFFh for none.
    uint16_t nextRecordId;
    sel_event_record record;
};

/// Handlers of Get SEL Info and Get SEL Allocation Info, for the node of the
/// response. The first reads what the log has that the cache has not, and
/// hands new events to the registered handlers. A null count is not written.
int IpmiIfcRhSelInfo(ipmiifc_resp* resp, unsigned short* count);
int IpmiIfcRhSelInfoNoCount(ipmiifc_resp* resp);
int IpmiIfcRhSelGetAllocInfo(ipmiifc_resp* resp);

int IpmiIfcSelReserve(int node);
int IpmiIfcSelReadEntry(int node, ipmiifc_sel_entry* entry);
/// Each appends to the cache.
int IpmiIfcSelReadAll(int node);
int IpmiIfcSelReadNew(int node, unsigned short lastId);
int IpmiIfcSelGetAll(int node);

/// Hands every event later than `since` to the handlers; FFFFFFFFh: every
/// event. Always 0; does nothing in command-line mode.
int IpmiIfcSelGenerateEvents(int node, unsigned since);

/// Frees the handlers of this node; those that a walk is at when it has ended.
void IpmiIfcSelCleanUpEventHandlers(int node);

/// One exchange about the log; null without an answer.
Response sendAboutSel(uint8_t netfn, uint8_t command, uint8_t* data = nullptr,
                      uint16_t size = 0);

/// An empty log is complete.
void startSelProgress(IpmiNode& node, unsigned total);

/// How a walk over the log ended.
enum class SelWalkEnd
{
    complete,    ///< At the log's end, or where it began to repeat itself.
    counted,     ///< After as many records as the log said that it has.
    failed,      ///< Something could not be read.
    firstFailed, ///< Not even the record that it was to go on from.
    replaced,    ///< That record is another one now.
    unread       ///< There was nothing to walk over.
};
SelWalkEnd readWholeLog(IpmiNode& node) VEK_REQUIRES(node.selRefreshMutex);
SelWalkEnd readNewRecords(IpmiNode& node, uint16_t lastId)
    VEK_REQUIRES(node.selRefreshMutex);

using SelRecords = std::vector<std::shared_ptr<IpmiSelData>>;
using SelRecordBytes = std::array<uint8_t, sizeof(sel_event_record)>;

SelRecordBytes bytesOf(const IpmiSelData& data);

/// Puts the cached events from index `first` on that are later than `since`,
/// and not among `known`, behind those that wait for the handlers. Returns how
/// many records the cache has.
size_t queueEvents(IpmiNode& node, size_t first, uint32_t since,
                   const std::set<SelRecordBytes>& known = {});
/// Calls the handlers with what waits, unless another thread is at it, which
/// then goes on with it.
void deliverEvents(IpmiNode& node);
/// Calls them with null, behind what waits.
void announceRefresh(IpmiNode& node);

/// Puts the list aside, elements and all; frees every element there is.
void dropSelHandlers(IpmiNode& node) VEK_REQUIRES(node.selMutex);
void freeSelHandlers(IpmiNode& node) VEK_REQUIRES(node.selMutex);

} // namespace Ipmi

#endif
