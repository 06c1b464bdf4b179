/// Node 0 of the library on the simulated device, in one process.
#ifndef VEK_TESTS_DEVICE_NODE_FIXTURE_H
#define VEK_TESTS_DEVICE_NODE_FIXTURE_H

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "ipmi/IpmiNode.h"
#include "sim/device/device.h"
#include "sim/model/bmc.h"
#include "tests/support/libc_seam.h"

using Sim::Bytes;

/// A request as it reached the simulated controller.
using SentRequest = Sim::Request;

std::vector<std::string> texts(const std::vector<Seam::LogLine>& lines);

/// Lines of the log that hold a text; the log is used up.
int logged(const std::string& text);

/// Rules of faults from words between blanks, of which the first letter stands
/// for a command: Get SEL (I)nfo, Get SEL (E)ntry, (R)eserve SEL, (C)lear SEL,
/// Read (F)RU Data.
std::vector<std::string> rules(const std::string& words);

/// How many handles were opened so far.
int openCount();

/// The next receive of the driver fails.
void failNextReceive(int errnoValue);

void injectEvent();
void removeDevice();
void returnDevice();

/// Get Chassis Status: what sendCmd returns for it.
int sendChassisStatus();

class NodeFixture : public testing::Test
{
protected:
    /// A fresh node, not started, on a healthy controller; a second takes 5 ms.
    void SetUp() override;
    void TearDown() override;

    void resetNode();

    /// Another controller behind the device, which is open then.
    void serveState(Sim::BmcState state);
    /// A controller as at the beginning, with these faults.
    void serve(const std::vector<std::string>& faults);
    /// Gives the controller that is there other faults.
    void setFaults(const std::vector<std::string>& faults);

    /// Requests since the last call.
    std::vector<SentRequest> takeExchanges();
    /// Waits (5 s at most) for an exchange, of a command if one is given.
    void waitForExchange(int netFn = -1, int command = -1);

    void startNode(int interval);
    Ipmi::IpmiIfc::IPMI_STATE waitUntilRunning();
    void stopNode();
    void joinNode();

private:
    std::thread thread_;
    size_t taken_ = 0;
};

/// The same with the device open and without a polling thread, on controllers
/// that hold records.
class RecordsFixture : public NodeFixture
{
protected:
    void SetUp() override;
    void TearDown() override;

    /// A controller with these records, under ids from 10h on.
    static Sim::BmcState stateWith(const std::vector<Bytes>& records);
};

#endif
