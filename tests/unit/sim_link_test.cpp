// The bytes below were recorded between QEMU 7.2 and a Linux 6.1 guest, except
// where a row says that it is broken.
#include <gtest/gtest.h>

#include "sim/fault/fault.h"
#include "sim/link/session.h"
#include "sim/model/bmc.h"

namespace Sim
{
namespace
{

TEST(SimLink, requestsDecode)
{
    const struct
    {
        const char* what;
        Bytes wire;
        uint8_t sequence, netFn, lun, command;
        Bytes data;
    } rows[] = {
        {"no data", {0x00, 0x18, 0x01, 0xE7, 0xA0}, 0x00, 0x06, 0, 0x01, {}},
        {"escaped checksum",
         {0x09, 0x18, 0x2E, 0x07, 0xAA, 0xBA, 0xA0},
         0x09,
         0x06,
         0,
         0x2E,
         {0x07}},
        {"each byte that has to be escaped",
         {0x15, 0x28, 0x44, 0xAA, 0xB0, 0xAA, 0xB1, 0xAA, 0xBA, 0xB0, 0x10,
          0xD4, 0xA0},
         0x15,
         0x0A,
         0,
         0x44,
         {0xA0, 0xA1, 0xAA, 0xB0, 0x10}},
        {"another lun", {0x01, 0x1B, 0x01, 0xE3, 0xA0}, 1, 0x06, 3, 0x01, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bytes received = row.wire;
        const auto frame = takeFrame(received);
        ASSERT_TRUE(frame);
        EXPECT_TRUE(received.empty());
        EXPECT_EQ(frame->kind, LinkKind::Message);
        const auto message = decodeRequest(frame->body);
        ASSERT_TRUE(message);
        EXPECT_EQ(message->sequence, row.sequence);
        EXPECT_EQ(message->request.netFn, row.netFn);
        EXPECT_EQ(message->request.lun, row.lun);
        EXPECT_EQ(message->request.command, row.command);
        EXPECT_EQ(message->request.data, row.data);
        EXPECT_EQ(encodeFrame(*frame), row.wire);
    }
}

TEST(SimLink, brokenRequestsAreNoRequests)
{
    const struct
    {
        const char* what;
        Bytes wire;
    } rows[] = {
        {"nothing", {0xA0}},
        {"no command", {0x00, 0x18, 0xE8, 0xA0}},
        {"wrong sum", {0x00, 0x18, 0x01, 0xE8, 0xA0}},
        {"ends in an escape", {0x00, 0x18, 0x01, 0xE7, 0xAA, 0xA0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bytes received = row.wire;
        const auto frame = takeFrame(received);
        ASSERT_TRUE(frame);
        EXPECT_FALSE(decodeRequest(frame->body));
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

TEST(SimLink, answersRepeatTheSequenceAndEscape)
{
    LinkRequest request;
    request.sequence = 0x12;
    Outcome outcome;
    outcome.netFn = 0x07;
    outcome.command = 0x01;
    outcome.bytes = {0x00, 0x20, 0x01, 0xA0, 0xA1, 0x02,
                     0xAA, 0x01, 0x02, 0x03, 0x04, 0x05};
    EXPECT_EQ(
        encodeAnswer(request, outcome),
        (Bytes{0x12, 0x1C, 0x01, 0x00, 0x20, 0x01, 0xAA, 0xB0, 0xAA, 0xB1,
               0x02, 0xAA, 0xBA, 0x01, 0x02, 0x03, 0x04, 0x05, 0xB4, 0xA0}));
}

struct Machine
{
    explicit Machine(std::chrono::milliseconds latency = {},
                     FaultSet faults = {})
        : controller{std::make_unique<Bmc>(state()), std::move(faults), latency}
    {}

    /// Silent to command 55h.
    static BmcState state()
    {
        BmcState state;
        state.messaging.emplace();
        state.answers = {{0x06, 0x55, {}, {}}};
        return state;
    }
    /// What is sent back, without its delays.
    std::vector<Bytes> send(const Bytes& bytes)
    {
        std::vector<Bytes> frames;
        for (const LinkReply& reply :
             session.receive(bytes.data(), bytes.size()).replies)
            frames.push_back(reply.frame);
        return frames;
    }

    Controller controller;
    LinkSession session{controller};
};

TEST(SimLink, answersInOrderAndSkipsWhatIsBroken)
{
    Machine machine;
    const auto frames = machine.send({0xFF, 0x01, 0xA1,             //
                                      0x07, 0x18, 0x55, 0x8C, 0xA0, // mute
                                      0x08, 0x18, 0x01, 0x00, 0xA0, // bad
                                      0x09, 0x18, 0xFE, 0xE1, 0xA0, //
                                      0x0B, 0x18, 0xFE, 0xDF, 0xA0});
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0], (Bytes{0x09, 0x1C, 0xFE, 0xC1, 0x1C, 0xA0}));
    EXPECT_EQ(frames[1][0], 0x0B);
}

TEST(SimLink, interruptsAreEnabledOnceTheMachineWantsThem)
{
    const Bytes enable = {0x05, 0xA1};
    Machine machine;
    EXPECT_EQ(machine.send({0x05, 0x18, 0x2E, 0x04, 0xB1, 0xA0}).size(), 1u);
    EXPECT_TRUE(machine.session.connected().replies.empty());
    const auto frames =
        machine.send({0x09, 0x18, 0x2E, 0x07, 0xAA, 0xBA, 0xA0});
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0], (Bytes{0x09, 0x1C, 0x2E, 0x00, 0xAD, 0xA0}));
    EXPECT_EQ(frames[1], enable);
    const auto again = machine.session.connected().replies;
    ASSERT_EQ(again.size(), 1u);
    EXPECT_EQ(again[0].frame, enable);
}

TEST(SimLink, eventsCallForAttentionUntilTheyAreRead)
{
    const Bytes attention = {0x02, 0xA1};
    const Bytes request = {0x00, 0x18, 0x01, 0xE7, 0xA0};
    Machine machine;
    machine.controller.bmc().queueEvent(Bytes(16));
    const auto frames = machine.send(request);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[1], attention);
    EXPECT_EQ(machine.send(request).size(), 1u);
    EXPECT_EQ(machine.session.connected().replies.size(), 1u);
    machine.send({0x0A, 0x18, 0x35, 0xA9, 0xA0});
    EXPECT_TRUE(machine.session.connected().replies.empty());
}

/// What the driver makes of a Get Device ID (LUN 0) to 72h on channel 6, but
/// for its request's sequence number and frame.
const Bytes bridgedDeviceId = {0x06, 0x72, 0x18, 0x76, 0x20, 0x0A, 0x01, 0xD5};

TEST(SimLink, messagesToOtherControllersAreAnsweredThroughTheQueue)
{
    BmcState state = Machine::state();
    state.channels = {{6, 1, 1}};
    state.satellites.emplace_back();
    state.satellites[0].busChannel = 6;
    state.satellites[0].address = 0x72;
    state.satellites[0].identity.product = 0x1234;
    Mistake mistake;
    FaultSet faults;
    faults.add(*parseFault("cmd=01,nth=2,silence", mistake));
    Controller controller{std::make_unique<Bmc>(state), faults,
                          std::chrono::milliseconds{5}};
    LinkSession session{controller};
    const auto send = [&](uint8_t command, const Bytes& data) {
        Bytes body{0x00, 0x18, command};
        append(body, data);
        uint8_t sum = 0;
        for (uint8_t byte : body)
            sum = uint8_t(sum + byte);
        body.push_back(uint8_t(-sum));
        const Bytes frame = encodeFrame({LinkKind::Message, body});
        return session.receive(frame.data(), frame.size()).replies;
    };
    auto replies = send(0x34, bridgedDeviceId);
    ASSERT_EQ(replies.size(), 2u);
    EXPECT_EQ(replies[1].frame, (Bytes{0x02, 0xA1})); // attention
    EXPECT_EQ(replies[1].delay, std::chrono::milliseconds{10});
    EXPECT_EQ(controller.exchange({6, 0x31, {}}).bytes, (Bytes{0, 1}));
    EXPECT_EQ(controller.exchange({6, 0x33, {}}).bytes,
              (Bytes{0, 6, 0x1E, 0xC2, 0x72, 0x08, 0x01, 0,    0x20, 0,
                     0, 0, 0x02, 0,    0,    0,    0,    0x34, 0x12, 0x1D}));
    EXPECT_EQ(controller.exchange({6, 0x33, {}}).bytes, Bytes{0x80});
    EXPECT_EQ(send(0x34, bridgedDeviceId).size(), 1u); // silent: refused
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
    Mistake mistake;
    FaultSet faults;
    faults.add(*parseFault("cmd=01,vanish=1000", mistake));
    Machine machine{{}, faults};
    const Bytes request = {0x00, 0x18, 0x01, 0xE7, 0xA0};
    const LinkStep step =
        machine.session.receive(request.data(), request.size());
    EXPECT_TRUE(step.vanish);
    EXPECT_EQ(step.away, std::chrono::seconds{1});
    EXPECT_TRUE(step.replies.empty());
}

TEST(SimLink, answersThatWouldBeTooLateAreDropped)
{
    const Bytes request = {0x00, 0x18, 0x01, 0xE7, 0xA0};
    EXPECT_EQ(Machine{std::chrono::milliseconds{3500}}.send(request).size(),
              1u);
    EXPECT_EQ(Machine{std::chrono::milliseconds{3501}}.send(request).size(),
              0u);
}

TEST(SimLink, aNewConnectionBeginsWithAWholeFrame)
{
    Machine machine;
    machine.send({0x00, 0x18});
    machine.session.connected();
    EXPECT_EQ(machine.send({0x00, 0x18, 0x01, 0xE7, 0xA0}).size(), 1u);
}

} // namespace
} // namespace Sim
