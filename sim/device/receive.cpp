#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "sim/device/driver.h"

namespace Sim
{

int Driver::receiveWhole(Handle& handle, void* argument)
{
    return receive(handle, *static_cast<ipmi_recv*>(argument), false);
}

int Driver::receiveCut(Handle& handle, void* argument)
{
    return receive(handle, *static_cast<ipmi_recv*>(argument), true);
}

/// A message that cannot be handed out stays, and so does what the caller
/// has in his record.
int Driver::receive(Handle& handle, ipmi_recv& into, bool cut)
{
    if (receiveErrno_)
        return -std::exchange(receiveErrno_, 0);
    const Message* message = handle.firstDue(clock_.now());
    if (!message)
        return -EAGAIN;
    if (into.addr_len < Address::size)
        return -EINVAL;
    if (isFault(into.addr))
        return -EFAULT;
    const bool fits = message->data.size() <= into.msg.data_len;
    if (!fits && !cut)
        return -EMSGSIZE;
    const size_t length =
        std::min<size_t>(message->data.size(), into.msg.data_len);
    if (length > 0 && isFault(into.msg.data))
        return -EFAULT;
    std::memcpy(into.addr, &message->from.bytes, Address::size);
    if (length > 0)
        std::memcpy(into.msg.data, message->data.data(), length);
    into.recv_type = message->receiveType;
    into.addr_len = Address::size;
    into.msgid = message->id;
    into.msg.netfn = message->netFn;
    into.msg.cmd = message->command;
    into.msg.data_len = static_cast<unsigned short>(length);
    handle.dropFirst();
    return fits ? 0 : -EMSGSIZE;
}

} // namespace Sim
