// Handlers of new events: registration, and the calls.
//
// An element leaves the list at once and its memory when no walk is under way:
// a walk may be at it, in its callback or in one ahead of it.
#include <algorithm>
#include <cstring>
#include <cxxabi.h>
#include <set>
#include <syslog.h>

#include "ipmi/IpmiIfcSel.h"
#include "ipmi/IpmiSelRecord.h"

namespace Ipmi
{

namespace
{

constexpr int noCallback = 5;
constexpr int notRegistered = 2;

void freeChain(SelHandlerEntry*& head)
{
    while (head) {
        SelHandlerEntry* const entry = head;
        head = entry->nextOwned;
        delete entry;
    }
}

void putOn(SelHandlerEntry*& head, SelHandlerEntry* entry)
{
    entry->nextOwned = head;
    head = entry;
}

// It has left the list, and is not called again.
void remove(IpmiNode& node, SelHandlerEntry* entry) VEK_REQUIRES(node.selMutex)
{
    entry->callback = nullptr;
    putOn(node.selRemoved, entry);
    if (node.selWalks == 0)
        freeChain(node.selRemoved);
}

SelHandlerEntry* find(SelHandlerEntry* from, SelEventHandler callback)
{
    while (from && from->callback != callback)
        from = from->next;
    return from;
}

/// A walk over the list, which keeps its elements alive.
class HandlerWalk
{
public:
    explicit HandlerWalk(IpmiNode& node) VEK_REQUIRES(node.selMutex)
        : node_{node}
    {
        ++node_.selWalks;
    }
    ~HandlerWalk() VEK_NO_THREAD_SAFETY_ANALYSIS
    {
        if (--node_.selWalks == 0)
            freeChain(node_.selRemoved);
    }
    HandlerWalk(const HandlerWalk&) = delete;
    HandlerWalk& operator=(const HandlerWalk&) = delete;

private:
    IpmiNode& node_;
};

/// Marks the one thread that hands events on.
class Delivery
{
public:
    explicit Delivery(bool& delivering) : delivering_{delivering}
    {
        delivering_ = true;
    }
    ~Delivery() { delivering_ = false; }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

private:
    bool& delivering_;
};

/// Whether it returned.
bool callHandler(const SelHandlerEntry& entry, IpmiSelData* record)
{
    try {
        entry.callback(entry.context, record);
        return true;
    } catch (const CmpiStatus& e) {
        syslog(LOG_DEBUG, "Event handler ran into issues: %s(%d)", e.msg(),
               int(e.rc()));
    } catch (abi::__forced_unwind&) {
        throw; // The thread is being cancelled.
    } catch (...) {
        syslog(LOG_DEBUG, "Event handler ran into issues");
    }
    return false;
}

// What is thrown ends the walk of a refresh, and not that of an event: each
// event is for every handler.
void callHandlers(IpmiNode& node, IpmiSelData* record)
{
    VEK::MutexLock lock{node.selMutex};
    const HandlerWalk walk{node};
    for (SelHandlerEntry* entry = node.selHandlers; entry; entry = entry->next)
    {
        if (!entry->callback)
            continue;
        const SelHandlerEntry called = *entry;
        VEK::MutexUnlock unlocked{node.selMutex};
        if (!callHandler(called, record) && !record)
            break;
    }
}

bool isLater(const IpmiSelData& data, uint32_t since)
{
    constexpr uint32_t every = 0xffffffff;
    return data.isSelEventRecord() &&
           (since == every || data.messageTimeStamp() > since);
}

} // namespace

SelRecordBytes bytesOf(const IpmiSelData& data)
{
    SelRecordBytes bytes;
    memcpy(bytes.data(), &data.record(), bytes.size());
    return bytes;
}

size_t queueEvents(IpmiNode& node, size_t first, uint32_t since,
                   const std::set<SelRecordBytes>& known)
{
    const bool silent = _getState(0) == IpmiIfc::STATE_CLI;
    VEK::MutexLock lock{node.selMutex};
    const SelRecords& records = *node.selRecords;
    for (size_t i = first; i < records.size() && !silent; ++i)
        if (isLater(*records[i], since) &&
            known.count(bytesOf(*records[i])) == 0)
            node.selEvents->push_back(records[i]);
    return records.size();
}

void deliverEvents(IpmiNode& node)
{
    VEK::MutexLock lock{node.selMutex};
    if (node.selDelivering)
        return;
    const Delivery delivery{node.selDelivering};
    while (!node.selEvents->empty()) {
        const std::shared_ptr<IpmiSelData> record = node.selEvents->front();
        node.selEvents->pop_front();
        VEK::MutexUnlock unlocked{node.selMutex};
        callHandlers(node, record.get());
    }
}

void announceRefresh(IpmiNode& node)
{
    {
        VEK::MutexLock lock{node.selMutex};
        node.selEvents->push_back(nullptr);
    }
    deliverEvents(node);
}

int IpmiIfcSelGenerateEvents(int, unsigned since)
{
    queueEvents(g_IpmiNode[0], 0, since);
    deliverEvents(g_IpmiNode[0]);
    return 0;
}

int IpmiIfc::registerSelEventHandler(int, SelEventHandler callback,
                                     void* context)
{
    if (!callback)
        return noCallback;
    IpmiNode& node = g_IpmiNode[0];
    VEK::MutexLock lock{node.selMutex};
    if (!find(node.selHandlers, callback))
        node.selHandlers =
            new SelHandlerEntry{node.selHandlers, callback, context, nullptr};
    return 0;
}

int IpmiIfc::registerSelEventHandler(SelEventHandler callback, void* context)
{
    return registerSelEventHandler(0, callback, context);
}

// Callers rely on the handlers between the first and the one that is removed
// being called no more. They are kept, since they never were unregistered.
int IpmiIfc::unRegisterSelEventHandler(int, SelEventHandler callback)
{
    if (!callback)
        return noCallback;
    IpmiNode& node = g_IpmiNode[0];
    VEK::MutexLock lock{node.selMutex};
    SelHandlerEntry* const head = node.selHandlers;
    SelHandlerEntry* const found = find(head, callback);
    if (!found)
        return notRegistered;
    if (found == head) {
        node.selHandlers = head->next;
    } else {
        for (SelHandlerEntry* e = head->next; e != found; e = e->next)
            putOn(node.selDropped, e);
        head->next = found->next;
    }
    remove(node, found);
    return 0;
}

int IpmiIfc::unRegisterSelEventHandler(SelEventHandler callback)
{
    return unRegisterSelEventHandler(0, callback);
}

void IpmiIfcSelCleanUpEventHandlers(int number)
{
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return;
    VEK::MutexLock lock{node->selMutex};
    while (SelHandlerEntry* const head = node->selHandlers) {
        node->selHandlers = head->next;
        remove(*node, head);
    }
}

void dropSelHandlers(IpmiNode& node)
{
    for (SelHandlerEntry* e = node.selHandlers; e; e = e->next)
        putOn(node.selDropped, e);
    node.selHandlers = nullptr;
}

void freeSelHandlers(IpmiNode& node)
{
    if (node.selWalks != 0)
        return; // The process ends in the midst of a handler.
    dropSelHandlers(node);
    freeChain(node.selDropped);
}

} // namespace Ipmi
