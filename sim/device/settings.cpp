#include "sim/device/settings.h"

#include <algorithm>
#include <cerrno>

#include <sys/ioctl.h>

#include "sim/device/handle.h"

namespace Sim
{

namespace
{

using Channel = Interface::Channel;
using ChannelValue = ipmi_channel_lun_address_set;

template <typename T>
T& as(void* argument)
{
    return *static_cast<T*>(argument);
}

template <uint8_t Channel::*member, uint8_t mask>
int setChannel0(Handle& handle, void* argument)
{
    handle.interface().channels[0].*member =
        uint8_t(as<unsigned>(argument) & mask);
    return 0;
}

template <uint8_t Channel::*member>
int getChannel0(Handle& handle, void* argument)
{
    as<unsigned>(argument) = handle.interface().channels[0].*member;
    return 0;
}

template <uint8_t Channel::*member, uint8_t mask>
int setChannel(Handle& handle, void* argument)
{
    const auto& value = as<ChannelValue>(argument);
    if (value.channel >= IPMI_NUM_CHANNELS)
        return -EINVAL;
    handle.interface().channels[value.channel].*member = value.value & mask;
    return 0;
}

template <uint8_t Channel::*member>
int getChannel(Handle& handle, void* argument)
{
    auto& value = as<ChannelValue>(argument);
    if (value.channel >= IPMI_NUM_CHANNELS)
        return -EINVAL;
    value.value = handle.interface().channels[value.channel].*member;
    return 0;
}

int setTiming(Handle& handle, void* argument)
{
    handle.timing = as<ipmi_timing_parms>(argument);
    return 0;
}

int getTiming(Handle& handle, void* argument)
{
    as<ipmi_timing_parms>(argument) = handle.timing;
    return 0;
}

int setMaintenanceMode(Handle& handle, void* argument)
{
    const int mode = as<int>(argument);
    if (mode < IPMI_MAINTENANCE_MODE_AUTO || mode > IPMI_MAINTENANCE_MODE_ON)
        return -EINVAL;
    handle.interface().maintenanceMode = mode;
    return 0;
}

/// The driver hands out its own failure as if it were the mode.
int getMaintenanceMode(Handle& handle, void* argument)
{
    const Interface& interface = handle.interface();
    as<int>(argument) = interface.gone ? -ENODEV : interface.maintenanceMode;
    return 0;
}

int registerChannels(Handle& handle, const ipmi_cmdspec_chans& wanted)
{
    auto& all = handle.interface().registrations;
    for (const auto& one : all)
        if (one.netFn == wanted.netfn && one.command == wanted.cmd &&
            (one.channels & wanted.chans))
            return -EBUSY;
    all.push_back({&handle, wanted.netfn, wanted.cmd, wanted.chans});
    return 0;
}

int unregisterChannels(Handle& handle, const ipmi_cmdspec_chans& given)
{
    auto& all = handle.interface().registrations;
    int result = -ENOENT;
    for (auto& one : all)
        if (one.owner == &handle && one.netFn == given.netfn &&
            one.command == given.cmd && (one.channels & given.chans))
        {
            one.channels &= ~given.chans;
            result = 0;
        }
    all.erase(std::remove_if(all.begin(), all.end(),
                             [](const auto& one) { return one.channels == 0; }),
              all.end());
    return result;
}

template <int (*serve)(Handle&, const ipmi_cmdspec_chans&)>
int onAllChannels(Handle& handle, void* argument)
{
    const auto& command = as<ipmi_cmdspec>(argument);
    return serve(handle, {command.netfn, command.cmd, unsigned(IPMI_CHAN_ALL)});
}

template <int (*serve)(Handle&, const ipmi_cmdspec_chans&)>
int onChannels(Handle& handle, void* argument)
{
    return serve(handle, as<ipmi_cmdspec_chans>(argument));
}

struct Setting
{
    unsigned request;
    int (*serve)(Handle& handle, void* argument);
    bool servedWhenGone;
};

constexpr auto address = &Channel::address;
constexpr auto lun = &Channel::lun;

constexpr Setting settings[] = {
    {IPMICTL_REGISTER_FOR_CMD, onAllChannels<registerChannels>, false},
    {IPMICTL_UNREGISTER_FOR_CMD, onAllChannels<unregisterChannels>, false},
    {IPMICTL_SET_MY_ADDRESS_CMD, setChannel0<address, 0xFF>, false},
    {IPMICTL_GET_MY_ADDRESS_CMD, getChannel0<address>, false},
    {IPMICTL_SET_MY_LUN_CMD, setChannel0<lun, 0x03>, false},
    {IPMICTL_GET_MY_LUN_CMD, getChannel0<lun>, false},
    {IPMICTL_SET_TIMING_PARMS_CMD, setTiming, true},
    {IPMICTL_GET_TIMING_PARMS_CMD, getTiming, true},
    {IPMICTL_SET_MY_CHANNEL_ADDRESS_CMD, setChannel<address, 0xFF>, false},
    {IPMICTL_GET_MY_CHANNEL_ADDRESS_CMD, getChannel<address>, false},
    {IPMICTL_SET_MY_CHANNEL_LUN_CMD, setChannel<lun, 0x03>, false},
    {IPMICTL_GET_MY_CHANNEL_LUN_CMD, getChannel<lun>, false},
    {IPMICTL_REGISTER_FOR_CMD_CHANS, onChannels<registerChannels>, false},
    {IPMICTL_UNREGISTER_FOR_CMD_CHANS, onChannels<unregisterChannels>, false},
    {IPMICTL_GET_MAINTENANCE_MODE_CMD, getMaintenanceMode, true},
    {IPMICTL_SET_MAINTENANCE_MODE_CMD, setMaintenanceMode, false},
};

} // namespace

int serveSetting(Handle& handle, unsigned request, void* argument)
{
    for (const Setting& setting : settings) {
        if (setting.request != request)
            continue;
        if (isFault(argument))
            return -EFAULT;
        if (handle.interface().gone && !setting.servedWhenGone)
            return -ENODEV;
        return setting.serve(handle, argument);
    }
    return -ENOTTY;
}

} // namespace Sim
