/// The facade of the library: one class of static operations.
///
/// A caller gives the library one thread, on which it calls IpmiIfc::start;
/// that thread then polls the controller until another thread calls
/// IpmiIfc::stop. All other operations may be called from any thread.
///
/// Every operation that takes a node number has a form without it, which
/// means node 0. The node table has four records. Only node 0 is ever started;
/// what was read of sensors and their records, FRU devices, entities and LAN
/// belongs to the record that is named (a number without a record has none of
/// it), and everything else in this header save pollAll serves node 0, whatever
/// number it is given; the number appears in log lines.
///
/// The library logs through syslog and never calls openlog.
#ifndef VEK_IPMI_IPMIIFC_H
#define VEK_IPMI_IPMIIFC_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <vek-ipmi/CmpiStatus.h>
#include <vek-ipmi/IpmiFru.h>
#include <vek-ipmi/IpmiFruImage.h>
#include <vek-ipmi/IpmiSdrRecord.h>
#include <vek-ipmi/IpmiSel.h>
#include <vek-ipmi/VekRelaxed.h>

namespace Ipmi
{

class IpmiLan;     // IpmiLan.h
class IpmiSelData; // IpmiSelData.h
class IpmiSensor;  // IpmiSensor.h

/// Called with the context given at registration, and with a new event record
/// or, once a polling pass that refreshed the caches, with null. The record
/// lives as long as the call.
typedef void (*SelEventHandler)(void* context, IpmiSelData* record);

/// Get Device ID response as received (IPMI v2.0, 20.1); bytes that the
/// controller did not send are 0.
struct ipmiifc_device_id
{
    uint8_t completionCode;
    uint8_t deviceId;
    uint8_t deviceRevision;
    uint8_t firmwareRevision1; ///< Bit 7: device not available; 6..0: major.
    uint8_t firmwareRevision2; ///< Minor, BCD.
    uint8_t ipmiVersion;       ///< BCD, low nibble major, high nibble minor.
    uint8_t additionalDeviceSupport;
    uint8_t manufacturerId[3]; ///< IANA enterprise number, LS byte first.
    uint8_t productId[2];      ///< LS byte first.
    uint8_t auxiliaryFirmwareRevision[4];
};

enum LogLvl
{
    LOG_LVL_ERROR = 3,
    LOG_LVL_WARNING = 4,
    LOG_LVL_INFO = 6,
    LOG_LVL_DEBUG = 7
};

/// Lets every syslog priority through, whatever level is given: callers rely
/// on finding the library's debug lines once they have called it.
void SetLogLevel(LogLvl level);

/// On periodic passes the SDR repository is read again every this many passes
/// (sensor readings are refreshed on the others), and the FRU inventory is
/// refreshed every this many passes. The first pollAll of a process multiplies
/// both by its node count. A step of 0 counts as 1; a FRU step of 1 leaves the
/// FRU inventory to full passes.
extern VEK::Relaxed<int> SKIP_SDR_STEP;
extern VEK::Relaxed<int> SKIP_FRU_STEP;

class IpmiIfc
{
public:
    /// Single bits, so that a wait can name several.
    enum IPMI_STATE
    {
        STATE_INITIAL = 1,
        STATE_STARTING = 2,
        STATE_RUNNING = 4,
        STATE_STOPPED = 8,
        STATE_CLI = 16 ///< Command-line mode (IpmiCommandLine.h).
    };

    enum IPMI_POLL_TYPE
    {
        POLL_NONE = 0,     ///< The wake-up performs no poll.
        POLL_NORMAL = 1,   ///< As if the polling interval had passed.
        POLL_FULL = 2,     ///< Refresh everything now.
        POLL_READINGS = 3, ///< Refresh the sensor readings now.
        POLL_SKIP = 4      ///< Leave out a periodic pass that is due.
    };

    // Lifecycle.

    /// Runs the node on the calling thread and returns when it was stopped, or
    /// at once when the device cannot be opened (state STATE_STOPPED then).
    ///
    /// @param interval polling interval in units of 16 seconds; below 1 the
    ///     node polls only when asked to.
    /// @throws CmpiStatus rc 2 unless the real user id is 0; rc 100 when the
    ///     wake-up pipe cannot be made.
    ///
    /// One node runs in a process: a second start beside a running one is a
    /// mistake of the caller's and wrecks both.
    /// SEL handlers that were registered before are dropped. A node that was
    /// stopped stays stopped: a later start in the same process opens the
    /// device, sends nothing and ends.
    static void start(int node, int interval);
    static void start(int interval);

    /// Ends the node and returns when its thread has left the loop. Waits for a
    /// start that is still under way, and for ever if there never is one.
    /// An exchange of the polling thread runs to its answer (30 s at most);
    /// exchanges of other threads are woken and come back without one.
    /// @throws CmpiStatus rc 200 when called a second time.
    static void stop(int node);
    static void stop();

    /// The loop itself; start calls it.
    ///
    /// SEL handlers run on this thread with the poll mutex held, so that no
    /// request for a poll is lost meanwhile: a handler must not call poll,
    /// pollAll, setPollingInterval or stop, which would wait for the handler's
    /// own thread.
    static void poll(int node);
    static void poll();

    /// Asks for a poll on the nodes from 0 to nodeCount - 1 and waits until
    /// they have polled. Serves the records that exist, whatever the count.
    /// A node that was not started is waited for.
    /// @param serial one node after the other, instead of all at once.
    /// @param shutdown set by the caller's other threads to end the wait for
    ///     nodes that were not started; null counts as false.
    static void pollAll(int nodeCount, bool serial, IPMI_POLL_TYPE type,
                        bool* shutdown);

    /// Wakes the polling loop and does not wait.
    static void doPoll(int node);
    static void doPoll();

    /// In units of 16 seconds; the loop takes a poll and then the new
    /// interval.
    static void setPollingInterval(int node, int interval);
    static void setPollingInterval(int interval);
    static int getPollingInterval(int node);
    static int getPollingInterval();

    static IPMI_STATE getState(int node);
    static IPMI_STATE getState();

    /// Waits until the state is one of mask's bits, and returns it.
    static IPMI_STATE waitState(int node, int mask);
    static IPMI_STATE waitState(int mask);

    /// As waitState. The time re-arms the wait and never ends it: callers
    /// rely on a state of the mask having been reached.
    static IPMI_STATE timedWaitState(int node, int mask, long sec, long usec);
    static IPMI_STATE timedWaitState(int mask, long sec, long usec);

    // Commands.

    /// Sends one request to the controller and waits up to 30 s for the
    /// answer, behind the exchanges that other threads have under way.
    ///
    /// @param resp_len in: size of resp_buf in bytes; out: bytes written.
    /// @param resp_buf receives the answer, completion code first, only when
    ///     that code is 0. Answers are held to 32 bytes.
    /// @return the completion code; 0xFF without an answer; 0x10 when the
    ///     answer was good but cut to resp_len bytes.
    static int sendCmd(int node, uint8_t cmd, uint8_t netfn, uint16_t data_len,
                       uint8_t* data, uint16_t* resp_len, uint8_t* resp_buf);
    static int sendCmd(uint8_t cmd, uint8_t netfn, uint16_t data_len,
                       uint8_t* data, uint16_t* resp_len, uint8_t* resp_buf);

    // The controller itself. These answer from the node record and send
    // nothing.

    /// 0, or 1 while no good Get Device ID answer is held.
    static int getManagementControllerInfo(int node, ipmiifc_device_id& out);
    static int getManagementControllerInfo(ipmiifc_device_id& out);

    /// Writes three bytes, LS first, to id and sets len to 1 (callers rely on
    /// the 1). Returns 0, or 1 while no good Get Device ID answer is held.
    static int getManufacturerId(int node, uint8_t* id, uint8_t& len);
    static int getManufacturerId(uint8_t* id, uint8_t& len);

    /// "Unknown" for a number that is not in the library's list. Static text.
    static const char* getManufacturerName(unsigned id);

    /// Self-test result and its detail byte (IPMI v2.0, 20.4). Returns 0, or 1
    /// while no good answer is held.
    static int getSelfTestResults(int node, uint8_t& result, uint8_t& detail);
    static int getSelfTestResults(uint8_t& result, uint8_t& detail);

    /// "n/a" while no good Get Device ID answer is held.
    static std::string GetBmcManufacturer();
    static std::string GetBmcIpmiVersion();
    /// Major revision in six bits, minor revision in hexadecimal without
    /// padding: callers compare these texts.
    static std::string GetBmcFWVersion();

    /// The host operating system as the controller reported it, in the bytes
    /// that it sent; empty when it reported none.
    static std::string GetBmcReportedOSName();
    static std::string GetBmcReportedOSVersion();

    // Sensors and their records, as the node last read them. These send
    // nothing. They wait while the headers of the repository are walked and
    // while sensors are discovered, which take many exchanges: seconds, and
    // with silent sensors minutes; getSdr while FRU devices are read, too.

    static ipmiifc_sdr_info getSdr(int node);
    static ipmiifc_sdr_info getSdr();

    /// All records, by type (01h, 02h, 03h, 08h with 09h, 10h, 11h, 12h, C0h,
    /// others), within a type the last read first. A shared record appears
    /// once for each sensor.
    static std::vector<IpmiSdrEntry> getSdrRecords(int node);
    static std::vector<IpmiSdrEntry> getSdrRecords();

    /// Sensors of entity 00h and 22h that are not threshold sensors, and event
    /// types that IPMI v2.0 does not define are left out.
    static std::vector<std::shared_ptr<IpmiSensor>> getSensors(int node);
    static std::vector<std::shared_ptr<IpmiSensor>> getSensors();

    /// The first sensor of this number and owner (low 8 bits), or null.
    static std::shared_ptr<IpmiSensor> getSensor(int node, unsigned number,
                                                 unsigned owner);
    static std::shared_ptr<IpmiSensor> getSensor(unsigned number,
                                                 unsigned owner);

    /// Whether a memory sensor reports events.
    static bool generatesMemoryEvents(int node);
    static bool generatesMemoryEvents();

    // The System Event Log. The controller's log is node 0's, whatever number
    // is given. The getters send nothing.
    //
    // A poll that finds new records hands each new event to every handler,
    // once and in the order of the log. Times decide what is new: an event
    // stamped within the second that the log's last addition had at the poll
    // before, or earlier (the controller's clock was set back), is held and
    // not handed on; within that second it is read with the next addition.
    // getSelData has every record that was read.
    //
    // Handlers run one at a time, with no lock of the log held, on the polling
    // thread, or on one that is in clearSel; the other of the two then does not
    // wait for them. They may call everything here, register and unregister
    // themselves and others. What a handler throws is logged; the others are
    // called all the same for a record, and no more in that pass for null. An
    // unregistered handler is not called again, save for a call that another
    // thread has begun.

    /// 0, also when the callback is registered already, whatever its context;
    /// 5 for null. Handlers are called last registered first.
    static int registerSelEventHandler(int node, SelEventHandler callback,
                                       void* context);
    static int registerSelEventHandler(SelEventHandler callback, void* context);

    /// 0; 5 for null; 2 when it is not registered. Handlers between the last
    /// registered one and this one go with it, behind a call that is under way:
    /// callers rely on it.
    static int unRegisterSelEventHandler(int node, SelEventHandler callback);
    static int unRegisterSelEventHandler(SelEventHandler callback);

    /// Null before the log was read.
    static std::shared_ptr<IpmiSel> getSel(int node);
    static std::shared_ptr<IpmiSel> getSel();
    /// In the order of the log.
    static std::vector<std::shared_ptr<IpmiSelData>> getSelData(int node);
    static std::vector<std::shared_ptr<IpmiSelData>> getSelData();
    static ipmiifc_sel_info getRawSelHeader(int node);
    static ipmiifc_sel_info getRawSelHeader();

    /// The last record that system software has processed, as the controller
    /// keeps it (IPMI v2.0, 30.6); 0 for none and after a failure. Sends.
    static uint16_t getLastProcessedSELEntry(int node);
    static uint16_t getLastProcessedSELEntry();
    static void setLastProcessedSELEntry(int node, unsigned short id);
    static void setLastProcessedSELEntry(unsigned short id);

    /// Clears the log and reads it again, handing on what is new in it. Waits
    /// for a read of the log that is under way.
    /// @return 0; 2 when the erasure failed, or 5 attempts were too busy or had
    ///     their reservation cancelled (nothing is read then); 4 without an
    ///     answer; 5 for any other refusal.
    static int clearSel(int node);
    static int clearSel();

    /// The log's own clock, in seconds since 1970; 0 after a failure. Opens
    /// and closes the device itself unless it is open.
    static uint32_t GetSelClock();
    /// Always 0.
    static uint32_t selGetClock(int node);
    static uint32_t selGetClock();

    // Entities: the parts of the platform, as records of associations and
    // sensors name them. What an earlier read named stays, in the tree until
    // the node is stopped.

    /// Each container, and behind it what it contains, then what only sensors
    /// name; an entity that several contain once for each.
    static std::vector<IpmiEntity> getEntities(int node);
    static std::vector<IpmiEntity> getEntities();

    /// The first container that lists the entity; all zeros for none, and for
    /// an entity that is a container itself or that a sensor names: callers
    /// rely on it. getEntityTree has every container.
    static IpmiEntity getEntityParent(int node, unsigned id, unsigned instance);
    static IpmiEntity getEntityParent(unsigned id, unsigned instance);

    /// The same as a tree.
    static std::vector<IpmiContainer> getEntityTree(int node);
    static std::vector<IpmiContainer> getEntityTree();

    /// The controller's LAN interface; never null. Node 0's for a number
    /// without a record.
    static IpmiLan* getLan(int node);
    static IpmiLan* getLan();

    // The FRU devices, as the node last read them. These send nothing; they
    // wait while a device is read.

    /// One for each logical device that a locator record tells of, and one for
    /// device 0; the array changes as a whole.
    static std::vector<std::shared_ptr<IpmiFru>> getFrus(int node);
    static std::vector<std::shared_ptr<IpmiFru>> getFrus();

    /// Of the device that a pass asked last; zeros when it did not answer.
    static FruDeviceHeader getFruDeviceHeader(int node);
    static FruDeviceHeader getFruDeviceHeader();

    /// Reads everything from a device of getFrus (null: device 0 of the node's
    /// own controller; so are devices without an access address), and changes
    /// nothing of what the others here answer. Sends, up to some hundred
    /// exchanges; waits for a pass over the devices that is under way.
    static IpmiFruContents getFruAreas(int node,
                                       const std::shared_ptr<IpmiFru>& fru);
    static IpmiFruContents getFruAreas(const std::shared_ptr<IpmiFru>& fru);

    /// The bytes of a device that is accessed by bytes, as far as they can be
    /// read; 0 or what ended it: a completion code, -1 without a usable answer,
    /// FRU_BY_WORDS. Sends.
    static constexpr int FRU_BY_WORDS = -2; ///< It is not accessed by bytes.
    static int readFruImage(int node, const std::shared_ptr<IpmiFru>& fru,
                            std::vector<unsigned char>& bytes);
    static int readFruImage(const std::shared_ptr<IpmiFru>& fru,
                            std::vector<unsigned char>& bytes);

    /// An area in words.
    struct Part
    {
        std::string kind; ///< "Product", "Chassis", "Board", "Multi" or empty.
        std::string name;
        std::string partNumber;
        std::string version;
        std::string manufacturer;
        std::string serialNumber;
        std::string assetTag;
        std::string date; ///< As IpmiFruBoard::getMfgDateTime8601.
    };
    /// Null is an area of no kind. Texts that the area's class does not have
    /// are empty or "n/a".
    static Part getFruPart(const std::shared_ptr<IpmiFruOptional>& area);

    // Commands to the controller itself.

    /// Chassis Identify (IPMI v2.0, 28.5).
    /// @param interval seconds; 0 turns it off.
    /// @param force bit 0: until turned off; the interval is ignored.
    /// @return 0; 1 when not supported; else the completion code, 0xFF without
    ///     an answer.
    static int identifyChassis(int node, uint8_t interval, uint8_t force);
    static int identifyChassis(uint8_t interval, uint8_t force);

    /// Generator id of a SEL record (IPMI v2.0, 32.1): address or software id,
    /// LUN in bits 8 and 9, channel in bits 12 to 15.
    static int convertToGeneratorId(int address, int channel, int lun);

    /// Reads the LAN configuration, the device id and the operating system's
    /// name and version again.
    /// Opens and closes the device itself unless it is open.
    static void GetBMCNetworking();

    /// Writes the host operating system's name and version into the
    /// controller (IPMI v2.0, 22.14a). A controller without a place for the
    /// version gets it appended to the name. An empty text is not written.
    /// Opens and closes the device itself unless it is open.
    /// @return 1 for success, 0 for failure.
    static int SetOSInfo(const std::string& name, const std::string& version);
};

} // namespace Ipmi

#endif
