// The bytes below were recorded between QEMU 7.2 and a Linux 6.1 guest, except
// where a row says that it is broken.
#include <gtest/gtest.h>
#include <numeric>
#include <sstream>

#include "sim/fault/fault.h"
#include "sim/link/session.h"
#include "sim/model/bmc.h"

namespace Sim
{
namespace
{

Bytes hex(const std::string& text)
{
    std::istringstream in{text};
    Bytes bytes;
    for (int byte; in >> std::hex >> byte;)
        bytes.push_back(uint8_t(byte));
    return bytes;
}

const Bytes getDeviceId = hex("00 18 01 E7 A0");

TEST(SimLink, requestsDecode)
{
    const struct
    {
        const char* wire;
        const char* decoded; ///< Sequence, function, LUN, command, data; or "".
    } rows[] = {
        {"00 18 01 E7 A0", "00 06 00 01"},
        {"09 18 2E 07 AA BA A0", "09 06 00 2E 07"}, // escaped checksum
        // Each byte that has to be escaped.
        {"15 28 44 AA B0 AA B1 AA BA B0 10 D4 A0",
         "15 0A 00 44 A0 A1 AA B0 10"},
        {"01 1B 01 E3 A0", "01 06 03 01"}, // another LUN
        {"A0", ""},
        {"00 18 E8 A0", ""},       // no command
        {"00 18 01 E8 A0", ""},    // wrong sum
        {"00 18 01 E7 AA A0", ""}, // ends in an escape
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.wire);
        Bytes received = hex(row.wire), decoded;
        const auto frame = takeFrame(received);
        ASSERT_TRUE(frame);
        EXPECT_TRUE(received.empty());
        EXPECT_EQ(frame->kind, LinkKind::Message);
        if (const auto message = decodeRequest(frame->body)) {
            const Request& r = message->request;
            decoded = {message->sequence, r.netFn, r.lun, r.command};
            append(decoded, r.data);
            EXPECT_EQ(encodeFrame(*frame), hex(row.wire));
        }
        EXPECT_EQ(decoded, hex(row.decoded));
    }
}

TEST(SimLink, framesAreTakenAsTheyBecomeWhole)
{
    Bytes received = {0xFF, 0x01, 0xA1, 0x08, 0x3F, 0xA1, 0x00, 0x18};
    auto frame = takeFrame(received);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->kind, LinkKind::Operation);
    EXPECT_EQ(frame->body, (Bytes{0xFF, 0x01}));
    EXPECT_TRUE(takeFrame(received));
    EXPECT_FALSE(takeFrame(received));
    received.insert(received.end(), {0x01, 0xE7, 0xA0});
    frame = takeFrame(received);
    ASSERT_TRUE(frame);
    EXPECT_TRUE(decodeRequest(frame->body));
}

FaultSet faultSet(const std::string& rule)
{
    Mistake mistake;
    FaultSet faults;
    faults.add(*parseFault(rule, mistake));
    return faults;
}

struct Machine
{
    explicit Machine(int latencyMs = 0, FaultSet faults = {})
        : controller{std::make_unique<Bmc>(state()), std::move(faults),
                     std::chrono::milliseconds{latencyMs}}
    {}

    /// Silent to command 55h; another controller at 72h of channel 6.
    static BmcState state()
    {
        BmcState state;
        state.messaging.emplace();
        state.answers = {{0x06, 0x55, {}, {}}};
        state.channels = {{6, 1, 1}};
        state.satellites.emplace_back();
        state.satellites[0].busChannel = 6;
        state.satellites[0].address = 0x72;
        state.satellites[0].identity.product = 0x1234;
        return state;
    }
    auto replies(const Bytes& bytes)
    {
        return session.receive(bytes.data(), bytes.size()).replies;
    }
    /// What is sent back, without its delays.
    std::vector<Bytes> send(const Bytes& bytes)
    {
        std::vector<Bytes> frames;
        for (const LinkReply& reply : replies(bytes))
            frames.push_back(reply.frame);
        return frames;
    }

    Controller controller;
    LinkSession session{controller};
};

TEST(SimLink, answersInOrderAndSkipsWhatIsBroken)
{
    Machine machine;
    // A command without an answer, a wrong sum, and two that are right.
    const auto frames = machine.send(
        hex("FF 01 A1 07 18 55 8C A0 08 18 01 00 A0 09 18 FE E1 A0 "
            "0B 18 FE DF A0"));
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0], hex("09 1C FE C1 1C A0"));
    EXPECT_EQ(frames[1][0], 0x0B);
}

TEST(SimLink, interruptsAreEnabledOnceTheMachineWantsThem)
{
    const Bytes enable = {0x05, 0xA1};
    Machine machine;
    EXPECT_EQ(machine.send(hex("05 18 2E 04 B1 A0")).size(), 1u);
    EXPECT_TRUE(machine.session.connected().replies.empty());
    EXPECT_EQ(machine.send(hex("09 18 2E 07 AA BA A0")),
              (std::vector<Bytes>{hex("09 1C 2E 00 AD A0"), enable}));
    const auto again = machine.session.connected().replies;
    ASSERT_EQ(again.size(), 1u);
    EXPECT_EQ(again[0].frame, enable);
}

TEST(SimLink, eventsCallForAttentionUntilTheyAreRead)
{
    const Bytes attention = {0x02, 0xA1};
    Machine machine;
    machine.controller.bmc().queueEvent(Bytes(16));
    const auto frames = machine.send(getDeviceId);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[1], attention);
    EXPECT_EQ(machine.send(getDeviceId).size(), 1u);
    EXPECT_EQ(machine.session.connected().replies.size(), 1u);
    machine.send(hex("0A 18 35 A9 A0"));
    EXPECT_TRUE(machine.session.connected().replies.empty());
}

/// What the driver makes of a Get Device ID (LUN 0) to 72h on channel 6, but
/// for its request's sequence number and frame.
const Bytes bridgedDeviceId = hex("06 72 18 76 20 0A 01 D5");

TEST(SimLink, messagesToOtherControllersAreAnsweredThroughTheQueue)
{
    Machine machine{5, faultSet("cmd=01,nth=2,silence")};
    Controller& controller = machine.controller;
    Bytes body{0x00, 0x18, 0x34};
    append(body, bridgedDeviceId);
    body.push_back(uint8_t(-std::accumulate(body.begin(), body.end(), 0)));
    const Bytes frame = encodeFrame({LinkKind::Message, body});
    const auto replies = machine.replies(frame);
    ASSERT_EQ(replies.size(), 2u);
    EXPECT_EQ(replies[1].frame, (Bytes{0x02, 0xA1})); // attention
    EXPECT_EQ(replies[1].delay, std::chrono::milliseconds{10});
    EXPECT_EQ(controller.exchange({6, 0x31, {}}).bytes, (Bytes{0, 1}));
    EXPECT_EQ(
        controller.exchange({6, 0x33, {}}).bytes,
        hex("00 06 1E C2 72 08 01 00 20 00 00 00 02 00 00 00 00 34 12 1D"));
    EXPECT_EQ(controller.exchange({6, 0x33, {}}).bytes, Bytes{0x80});
    const auto later = machine.replies(frame); // silent: refused
    ASSERT_EQ(later.size(), 2u);
    EXPECT_EQ(later[0].frame, (Bytes{0x00, 0xA1})); // no more attention
    Bytes wrongSum = bridgedDeviceId, nobody = bridgedDeviceId;
    wrongSum.back() ^= 1;
    nobody[1] = 0x70;
    nobody[3] = 0x78;
    for (const Bytes& data : {wrongSum, nobody})
        EXPECT_EQ(controller.exchange({6, 0x34, data}).bytes, Bytes{0x83});
    EXPECT_EQ(controller.counts().at(0x0601), 3u);
}

TEST(SimLink, aVanishedControllerDropsTheLink)
{
    Machine machine{0, faultSet("cmd=01,vanish=1000")};
    const LinkStep step =
        machine.session.receive(getDeviceId.data(), getDeviceId.size());
    EXPECT_TRUE(step.vanish);
    EXPECT_EQ(step.away, std::chrono::seconds{1});
    EXPECT_TRUE(step.replies.empty());
}

TEST(SimLink, answersThatWouldBeTooLateAreDropped)
{
    EXPECT_EQ(Machine{3500}.send(getDeviceId).size(), 1u);
    EXPECT_EQ(Machine{3501}.send(getDeviceId).size(), 0u);
}

TEST(SimLink, aNewConnectionBeginsWithAWholeFrame)
{
    Machine machine;
    machine.send({0x00, 0x18});
    machine.session.connected();
    EXPECT_EQ(machine.send(getDeviceId).size(), 1u);
}

} // namespace
} // namespace Sim
