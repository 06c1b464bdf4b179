// The entity tree as records make it.
#include "ipmi/IpmiIfcEntity.h"
#include "ipmi/IpmiIfcSdr.h"
#include "tests/device/node_fixture.h"
#include "tests/support/sdr_records.h"

using namespace Ipmi;

namespace
{

// A container, its flags, and eight bytes of what it contains.
Bytes association(uint8_t type, uint8_t id, uint8_t instance, uint8_t flags,
                  const Bytes& contents)
{
    constexpr size_t headSize = 8;
    Bytes bytes(headSize + contents.size());
    bytes[2] = 0x51;
    bytes[3] = type;
    bytes[4] = uint8_t(bytes.size() - 5);
    bytes[5] = id;
    bytes[6] = instance;
    bytes[7] = flags;
    std::copy(contents.begin(), contents.end(), bytes.begin() + headSize);
    return bytes;
}

Bytes sensorOf(uint8_t type, uint8_t id, uint8_t instance)
{
    return sensorRecord(type, 1, {{8, id}, {9, instance}}, "S");
}

class Entities : public RecordsFixture
{
protected:
    void TearDown() override
    {
        forget();
        RecordsFixture::TearDown();
    }
    static void forget()
    {
        IpmiIfcEntityCleanUpAll(0);
        IpmiIfcEntityInstantiateAll(0);
    }
    void read(const std::vector<Bytes>& records)
    {
        serveState(stateWith(records));
        EXPECT_EQ(IpmiIfcSdrGetInfo(0), 0);
    }

    /// "7.1(3.1 3.2) 10.1": containers with their contents.
    static std::string tree()
    {
        const auto name = [](const IpmiEntity& e) {
            return std::to_string(e.getId()) + "." +
                   std::to_string(e.getInstance());
        };
        std::string text;
        for (const IpmiContainer& top : IpmiIfc::getEntityTree()) {
            text += (text.empty() ? "" : " ") + name(top.entity);
            std::string inside;
            for (const IpmiEntity& e : top.contents)
                inside += (inside.empty() ? "" : " ") + name(e);
            text += inside.empty() ? "" : "(" + inside + ")";
        }
        return text;
    }
};

TEST_F(Entities, whatRecordsMakeOfIt)
{
    const struct
    {
        const char* what;
        std::vector<Bytes> records;
        const char* tree;
    } cases[] = {
        {"a list",
         {association(8, 7, 1, 0, {3, 1, 3, 2, 0, 9, 4, 1})},
         "7.1(3.1 3.2 4.1)"},
        {"ranges",
         {association(8, 7, 1, 0x80, {3, 1, 3, 3, 4, 9, 4, 8})},
         "7.1(3.1 3.2 3.3)"},
        {"ranges of two kinds",
         {association(8, 7, 1, 0x80, {3, 1, 4, 3, 0, 1, 0, 2})},
         "7.1"},
        {"an instance twice, in seven bits",
         {association(8, 7, 1, 0, {3, 1, 3, 0x81, 3, 1, 0, 0})},
         "7.1(3.1)"},
        {"a range that counts in eight",
         {association(8, 7, 1, 0x80, {3, 0x7e, 3, 0x81, 0, 0, 0, 0})},
         "7.1(3.126 3.127 3.0 3.1)"},
        {"a device-relative one, read alike",
         {association(9, 7, 1, 0, {3, 1, 0, 0, 4, 5, 0, 0})},
         "7.1(3.1 4.5)"},
        {"one container, two records; the last first",
         {association(8, 7, 1, 0, {3, 1, 0, 0, 0, 0, 0, 0}),
          association(8, 7, 0x81, 0, {3, 2, 0, 0, 0, 0, 0, 0})},
         "7.1(3.2 3.1)"},
        {"cut short", {association(8, 7, 1, 0, {3, 1, 3})}, "7.1(3.1 3.0)"},
        {"sensors: full, compact, event-only; contained or not",
         {association(8, 7, 1, 0, {3, 1, 0, 0, 0, 0, 0, 0}), sensorOf(3, 12, 1),
          sensorOf(2, 11, 1), sensorOf(1, 3, 1), sensorOf(1, 7, 1)},
         "7.1(3.1) 3.1 11.1 12.1"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        forget();
        read(c.records);
        EXPECT_EQ(tree(), c.tree);
    }
}

TEST_F(Entities, containersAndLists)
{
    const Bytes first = association(8, 7, 1, 0, {3, 1, 3, 2, 10, 1, 0, 0});
    const Bytes second = association(8, 23, 1, 0, {7, 1, 3, 2, 0, 0, 0, 0});
    read({second, first});
    const auto parent = [](unsigned id, unsigned instance) {
        return IpmiIfc::getEntityParent(id, instance).getId();
    };
    EXPECT_EQ(tree(), "7.1(3.1 3.2 10.1) 23.1(7.1 3.2)");
    EXPECT_EQ(parent(3, 1), 7u);
    EXPECT_EQ(parent(3, 0x82), 7u) << "the first one";
    EXPECT_EQ(parent(7, 1), 0u) << "a container itself";
    EXPECT_EQ(parent(9, 9), 0u);
    const entity_id supply{10, 1};
    EXPECT_EQ(parent(10, 1), 7u);
    IpmiIfcEntityAddParent(0, &supply, 0);
    EXPECT_EQ(parent(10, 1), 0u) << "a sensor's entity, listed before";
    IpmiIfcEntityCleanUpAll(0);
    read({second, first});
    EXPECT_EQ(parent(0x103, 1), 0u);
    const auto all = IpmiIfc::getEntities();
    ASSERT_EQ(all.size(), 7u);
    EXPECT_EQ(all[1].getParent().getName(), "System Board");
    read({association(8, 23, 1, 0, {29, 1, 0, 0, 0, 0, 0, 0})});
    EXPECT_EQ(tree(), "7.1(3.1 3.2 10.1) 23.1(7.1 3.2 29.1)") << "nothing goes";
    IpmiIfcEntityCleanUpAll(0);
    EXPECT_EQ(IpmiIfc::getEntities().size(), 8u) << "the list stays";
    EXPECT_EQ(tree(), "");
    const entity_id board{7, 1};
    EXPECT_EQ(IpmiIfcEntityAddChild(0, &board, 3, 1), -1);
    EXPECT_EQ(IpmiIfcEntityAddParent(0, &board, 0), 0);
    EXPECT_EQ(IpmiIfcEntityAddParent(0, &board, 0), -1);
    EXPECT_EQ(IpmiIfcEntityAddChild(0, &board, 3, 1), 0);
    EXPECT_TRUE(IpmiIfcEntityOnList(0, &board));
    EXPECT_EQ(IpmiIfcEntityListCreate(4), -1);
}

} // namespace
