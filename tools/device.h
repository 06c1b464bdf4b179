/// The controller, opened for one short-lived program.
#ifndef VEK_TOOLS_DEVICE_H
#define VEK_TOOLS_DEVICE_H

#include <functional>

#include <vek-ipmi/IpmiCommandLine.h>

#include "tools/collect/completion.h"
#include "tools/patience.h"
#include "tools/print/text.h"

namespace Tool
{

struct Answer
{
    Completion completion;
    Bytes data;               ///< Behind the completion code, when that is 0.
    bool possiblyCut = false; ///< As long as the library holds answers.
};

/// Node 0 in command-line mode, from construction to destruction.
class Device
{
public:
    /// @throws Failure with status noDevice or failed.
    Device();
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    /// Runs an operation of the library that returns a completion code, and
    /// tells FFh of the controller's own from the library's "no answer".
    Completion ask(const std::function<int()>& operation, WaitText text = {});

    /// One exchange, with the controller itself unless a target is given.
    Answer exchange(Command command, Bytes data,
                    const Ipmi::IpmiTarget& target = {});

private:
    void mark() const;
    bool marked() const;

    int fd_ = -1;
    int newFlags_ = 0; ///< Descriptor flags as the library opens it.
};

/// Why the device does not open, and what to do about it.
Failure openFailure(int reason, bool isRoot);

} // namespace Tool

#endif
