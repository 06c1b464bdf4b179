/// The node table. Installed for the sake of g_IpmiNode; the layout of the
/// record is no promise.
#ifndef VEK_IPMI_IPMINODE_H
#define VEK_IPMI_IPMINODE_H

#include <array>
#include <cstddef>
#include <list>
#include <memory>
#include <new>
#include <set>
#include <vector>

#include <vek-ipmi/IpmiIfc.h>
#include <vek-ipmi/IpmiLan.h>
#include <vek-ipmi/VekMutex.h>
#include <vek-ipmi/VekRelaxed.h>

namespace Ipmi
{

struct ipmiifc_entity_list;
struct ipmiifc_sdr_list;

/// First five bytes of a record (IPMI v2.0, 43); the id is the one under which
/// the record is read.
struct IpmiSdrHeader
{
    uint16_t recordId;
    uint8_t sdrVersion;
    uint8_t recordType;
    uint8_t recordLength; ///< Bytes behind the header.
};

/// The records, one list for each class of types.
enum IpmiSdrClass
{
    SDR_FULL,
    SDR_COMPACT,
    SDR_EVENT_ONLY,
    SDR_ASSOCIATION,
    SDR_GENERIC_LOCATOR,
    SDR_FRU_LOCATOR,
    SDR_CONTROLLER_LOCATOR,
    SDR_OEM,
    SDR_OTHER,
    SDR_CLASS_COUNT
};

/// An element of a node's list of SEL event handlers.
struct SelHandlerEntry
{
    SelHandlerEntry* next;
    SelEventHandler callback; ///< Null once it is unregistered.
    void* context;
    SelHandlerEntry* nextOwned; ///< Among those that have left the list.
};

/// What one read of the log leaves for the next.
struct SelRefresh
{
    /// Records of the cache that were looked at for handlers already.
    size_t offered = 0;
    /// Polls in a row on which the last record held could not be read.
    unsigned lastRecordFailures = 0;
    /// A read of the whole log did not come to its end and is due again, for
    /// events later than `since` save these, which handlers were offered.
    bool wholeAgain = false;
    uint32_t since = 0;
    std::set<std::array<uint8_t, 16>> known;
};

/// Ends of the wake-up pipe.
enum
{
    FD_READ = 0,
    FD_WRITE = 1
};

/// A T whose destructor never runs.
template <typename T>
class Undestroyed
{
public:
    Undestroyed() { new (bytes_) T; }
    T& operator*() { return *std::launder(reinterpret_cast<T*>(bytes_)); }
    T* operator->() { return &**this; }
    /// Frees what it holds.
    void renew()
    {
        (**this).~T();
        new (bytes_) T;
    }

private:
    alignas(T) unsigned char bytes_[sizeof(T)];
};

/// All that is known of one management controller.
///
/// Locks, outermost first: pollMutex, which the polling thread holds during a
/// pass; sdr_mutex, one for all nodes, during a refresh of records; sdrLock
/// before fruMutex and entityMutex, and before those of an exchange;
/// selRefreshMutex, which is held while the log is read, before selMutex;
/// selMutex before those of an exchange; targetMutex before infoMutex before
/// ifcMutex; stateMutex and identityMutex are leaves. Fields of type Relaxed
/// are shared without a lock.
struct IpmiNode
{
    /// Frees the caches and handlers, unless a thread is just at them: a
    /// process may end beside a polling thread.
    ~IpmiNode();

    int nodeNum = 0;
    VEK::Relaxed<int> msgSeq{0x5a5}; ///< Message id of the next request.

    VEK::Mutex stateMutex;
    VEK::Condition stateCond; ///< Broadcast after every change of state.
    IpmiIfc::IPMI_STATE
        state VEK_GUARDED_BY(stateMutex) = IpmiIfc::STATE_INITIAL;

    /// Held for the whole of one driver exchange.
    VEK::Mutex ifcMutex;
    /// Wakes exchanges that wait for an answer when the node is stopped.
    VEK::Relaxed<int> signalCmdPipeFds[2] = {-1, -1};

    VEK::Mutex pollMutex;
    VEK::Condition pollCond; ///< Asks for a poll.
    /// In units of 16 seconds; below 1: poll only when asked to.
    VEK::Relaxed<int> pollingInterval{-1};
    /// Set once by stop: no exchange starts any more.
    VEK::Relaxed<bool> shutdownFlag{false};
    /// Polls performed; the low three bits count down to the periodic pass.
    int pollCount VEK_GUARDED_BY(pollMutex) = 0;
    IpmiIfc::IPMI_POLL_TYPE
        pollType VEK_GUARDED_BY(pollMutex) = IpmiIfc::POLL_NONE;

    VEK::RwLock sdrLock;
    ipmiifc_sdr_info sdrInfo VEK_GUARDED_BY(sdrLock) = {};
    /// Reserve SDR Repository answer: completion code, id LS byte first. An id
    /// of 0 is none.
    uint8_t sdrReservation[3] VEK_GUARDED_BY(sdrLock) = {};
    /// Headers in the table; stays when the table is freed.
    uint32_t sdrHeaderCount VEK_GUARDED_BY(sdrLock) = 0;
    IpmiSdrHeader* sdrHeaders VEK_GUARDED_BY(sdrLock) = nullptr; ///< Owned.
    uint32_t sdrHeaderRoom VEK_GUARDED_BY(sdrLock) = 0;
    /// Record types that a refresh reads; none: all of them.
    std::vector<uint8_t> sdrWanted VEK_GUARDED_BY(sdrLock);
    /// Set by a walk that came to its end; read by nobody yet.
    uint8_t sdrHeadersComplete VEK_GUARDED_BY(sdrLock) = 0;
    ipmiifc_sdr_list* sdrLists[SDR_CLASS_COUNT] VEK_GUARDED_BY(sdrLock) = {};
    Undestroyed<std::vector<std::shared_ptr<IpmiSensor>>>
        sensors VEK_GUARDED_BY(sdrLock);
    /// A memory sensor reports events.
    VEK::Relaxed<bool> memoryEventsFlag{false};
    /// Counters of a read of the repository, as IpmiSdrProgress has them.
    VEK::Relaxed<unsigned> sdrTotal{0};
    VEK::Relaxed<unsigned> sdrWalked{0};
    VEK::Relaxed<unsigned> sdrRead{0};
    VEK::Relaxed<unsigned> sdrFailed{0};

    /// Serialises whole transactions and the writers of the identity.
    VEK::Mutex infoMutex VEK_ACQUIRED_BEFORE(ifcMutex, identityMutex);
    /// Leaf beside it, for the identity's bytes alone: readers do not wait
    /// for an exchange of up to 30 s.
    VEK::Mutex identityMutex;
    ipmiifc_device_id deviceId VEK_GUARDED_BY(identityMutex) = {};
    bool deviceIdAnswered VEK_GUARDED_BY(identityMutex) = false;
    /// Completion code, result and detail of Get Self Test Results.
    uint8_t selfTest[3] VEK_GUARDED_BY(identityMutex) = {};

    /// The driver's device. 0 until it was first opened and -1 after a close:
    /// a descriptor below 1 counts as not open.
    VEK::Relaxed<int> devFd{0};
    VEK::Relaxed<int> devOpen{0};

    /// Every exchange takes it first. Who sends to another controller holds it
    /// from setting the target to the end of the exchange, so that no command
    /// reaches a controller that another thread chose.
    VEK::RecursiveMutex targetMutex;
    /// Own slave address; 0 leaves the driver's, which is 20h.
    VEK::Relaxed<int> myAddress{0};
    /// Whom the next command is for; 0 means the local controller.
    VEK::Relaxed<int> targetAddress{0};
    VEK::Relaxed<uint8_t> targetLun{0};
    VEK::Relaxed<uint8_t> targetChannel{0};

    VEK::Mutex entityMutex;
    ipmiifc_entity_list* entityTree VEK_GUARDED_BY(entityMutex) = nullptr;
    Undestroyed<std::vector<IpmiEntity>> entities VEK_GUARDED_BY(entityMutex);
    /// Held while a FRU device is read, too; inside the lock of the records and
    /// one of all nodes, which a pass over the devices takes first.
    VEK::Mutex fruMutex;
    FruDeviceHeader fruDeviceHeader VEK_GUARDED_BY(fruMutex) = {};
    Undestroyed<std::vector<std::shared_ptr<IpmiFru>>>
        frus VEK_GUARDED_BY(fruMutex);
    Undestroyed<IpmiLan> lan;

    /// Held while the log is read and while it is cleared, so that one thread
    /// does not cancel the other's reservation; never while handlers run.
    VEK::Mutex selRefreshMutex;
    VEK::Mutex selMutex VEK_ACQUIRED_AFTER(selRefreshMutex);
    ipmiifc_sel_info selInfo VEK_GUARDED_BY(selMutex) = {};
    ipmiifc_sel_alloc_info selAllocInfo VEK_GUARDED_BY(selMutex) = {};
    uint16_t selReservationId VEK_GUARDED_BY(selMutex) = 0; ///< 0: none.
    /// The last record of selRecords, by its own id.
    uint16_t lastSelRecordId VEK_GUARDED_BY(selMutex) = 0;
    Undestroyed<std::shared_ptr<IpmiSel>> selSummary VEK_GUARDED_BY(selMutex);
    Undestroyed<std::vector<std::shared_ptr<IpmiSelData>>>
        selRecords VEK_GUARDED_BY(selMutex);
    Undestroyed<SelRefresh> selRefresh VEK_GUARDED_BY(selRefreshMutex);
    /// As IpmiSelProgress has them.
    VEK::Relaxed<unsigned> selTotal{0};
    VEK::Relaxed<unsigned> selRead{0};
    VEK::Relaxed<unsigned> selFailed{0};
    VEK::Relaxed<bool> selComplete{false};

    SelHandlerEntry* selHandlers VEK_GUARDED_BY(selMutex) = nullptr;
    /// Walks of the list that are under way, and what they may still be at.
    int selWalks VEK_GUARDED_BY(selMutex) = 0;
    SelHandlerEntry* selRemoved VEK_GUARDED_BY(selMutex) = nullptr;
    /// Left the list without having been unregistered: kept to the end.
    SelHandlerEntry* selDropped VEK_GUARDED_BY(selMutex) = nullptr;
    /// What handlers are to be called with, null for a pass that refreshed the
    /// caches, and whether a thread is at it.
    Undestroyed<std::list<std::shared_ptr<IpmiSelData>>>
        selEvents VEK_GUARDED_BY(selMutex);
    bool selDelivering VEK_GUARDED_BY(selMutex) = false;
};

constexpr size_t NODE_COUNT = 4;

/// Only record 0 is served by start, stop, the loop and the transport. The
/// records are made when the library is loaded and destroyed, last first,
/// when it is unloaded.
extern IpmiNode g_IpmiNode[NODE_COUNT];

} // namespace Ipmi

#endif
