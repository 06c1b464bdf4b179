// The step of a capture that reads FRU devices (IPMI v2.0, section 34).
#include <algorithm>
#include <chrono>
#include <thread>

#include "tools/collect/capture_query.h"
#include "tools/collect/record.h"
#include "tools/collect/sensor.h"
#include "tools/print/completion_codes.h"

namespace Tool
{

namespace
{

constexpr uint8_t notPresent = 0xCB;

struct Place
{
    Ipmi::IpmiTarget target;
    uint8_t device;
};

class FruReader
{
public:
    FruReader(CaptureQuery& query, const Place& place, CapturedFru& fru)
        : query_{query}, place_{place}, fru_{fru}
    {}

    /// Whether the bytes are all there.
    bool read()
    {
        if (fru_.byWords)
            measureOffsets();
        while (fru_.bytes.size() < fru_.size) {
            Bytes piece;
            if (!readPiece(offsetOf(fru_.bytes.size()), piece))
                return false;
            const size_t left = fru_.size - fru_.bytes.size();
            piece.resize(std::min(piece.size(), left));
            fru_.bytes.insert(fru_.bytes.end(), piece.begin(), piece.end());
        }
        return true;
    }

    const Completion& completion() const { return completion_; }

private:
    size_t unit() const { return fru_.byWords ? 2 : 1; }

    unsigned offsetOf(size_t byte) const
    {
        return unsigned(fru_.byteOffsets ? byte : byte / unit());
    }

    bool readPiece(unsigned offset, Bytes& piece)
    {
        constexpr int attempts = 8;
        for (int i = 0; i < attempts; ++i) {
            const Answer answer =
                query_.ask(commands::readFruData,
                           {place_.device, uint8_t(offset),
                            uint8_t(offset >> 8), uint8_t(size_ / unit())},
                           place_.target);
            completion_ = answer.completion;
            if (completion_.ok() && take(answer.data, piece))
                return true;
            if (!isWorthAnother())
                return false;
        }
        completion_.isCut = completion_.ok();
        return false;
    }

    // As much as the answer says and holds, in whole units.
    bool take(const Bytes& data, Bytes& piece) const
    {
        if (data.empty())
            return false;
        size_t count = std::min(data[0] * unit(), data.size() - 1);
        count -= count % unit();
        piece.assign(data.begin() + 1,
                     data.begin() + 1 + std::ptrdiff_t(count));
        return count != 0;
    }

    // Busy devices are given time, and small ones are asked for less: some say
    // so by a code of their own.
    bool isWorthAnother()
    {
        constexpr uint8_t busy = 0x81;
        constexpr size_t smallest = 2;
        if (!completion_.answered)
            return false;
        if (completion_.ok())
            return true;
        if (completion_.code == busy)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        else if (size_ <= smallest)
            return false;
        else
            size_ /= 2;
        return true;
    }

    // By the standard offsets of such a device count words, too; some firmware
    // counts bytes. Then what is at 4 is the second half of the first eight
    // bytes.
    void measureOffsets()
    {
        constexpr size_t probe = 4;
        Bytes begin, piece;
        if (!readPiece(0, begin) || !readPiece(probe, piece) ||
            begin.size() < 2 * probe || piece.size() < probe)
        {
            query_.miss("how FRU device " + std::to_string(place_.device) +
                        " counts offsets; words are taken for it");
            return;
        }
        const auto isAt = [&](size_t at) {
            return at + probe <= begin.size() &&
                   std::equal(piece.begin(), piece.begin() + probe,
                              begin.begin() + std::ptrdiff_t(at));
        };
        fru_.byteOffsets = isAt(probe) && !isAt(2 * probe);
    }

    CaptureQuery& query_;
    const Place& place_;
    CapturedFru& fru_;
    size_t size_ = 16;
    Completion completion_;
};

std::string nameOf(const Place& place)
{
    std::string name = "FRU device " + std::to_string(place.device);
    if (!isLocal(place.target))
        name += " of the controller at " + hexNumber(place.target.address);
    return name;
}

void captureFru(CaptureQuery& query, const Place& place)
{
    constexpr size_t answerSize = 4;
    CapturedController* controller = controllerAt(query, place.target);
    if (!controller)
        return;
    CapturedAnswer info = query.keep(commands::getFruInventoryAreaInfo,
                                     {place.device}, place.target);
    if (!info.ok() || info.answer.size() < answerSize) {
        // What a controller with FRU devices says of others by itself.
        if (info.answer != Bytes{notPresent} || controller->frus.empty())
            controller->answers.push_back(std::move(info));
        return;
    }
    CapturedFru fru;
    fru.device = place.device;
    // The transport asks the controller itself at LUN 0.
    fru.lun = isLocal(place.target) ? uint8_t{0} : place.target.lun;
    fru.size = info.answer[1] | info.answer[2] * 0x100u;
    fru.byWords = info.answer[3] & 1;
    FruReader reader{query, place, fru};
    if (!reader.read())
        query.miss(
            nameOf(place) + " from byte " + std::to_string(fru.bytes.size()) +
            " on: " + inWords(commands::readFruData, reader.completion()));
    controller->frus.push_back(std::move(fru));
}

bool isSame(const Place& a, const Place& b)
{
    return a.device == b.device && ((isLocal(a.target) && isLocal(b.target)) ||
                                    (a.target.address == b.target.address &&
                                     a.target.channel == b.target.channel &&
                                     a.target.lun == b.target.lun));
}

void addPlace(std::vector<Place>& places, const Place& place)
{
    const auto same = [&](const Place& other) {
        return isSame(place, other);
    };
    if (std::none_of(places.begin(), places.end(), same))
        places.push_back(place);
}

// Device 0 of the controller itself needs no record.
std::vector<Place> placesOf(const Capture& capture)
{
    constexpr size_t deviceAt = 6, flagsAt = 7;
    constexpr uint8_t logical = 0x80;
    std::vector<Place> places{{{}, 0}};
    if (!capture.repository)
        return places;
    for (const CapturedRecord& record : capture.repository->records)
        if (typeOf(record.bytes) == record_types::fruLocator &&
            record.bytes.size() > flagsAt && record.bytes[flagsAt] & logical)
            addPlace(places, {locatedBy(record.bytes), record.bytes[deviceAt]});
    return places;
}

} // namespace

void captureFrus(CaptureQuery& query)
{
    const std::vector<Place> places = placesOf(query.capture());
    query.progress().enter("FRU devices", unsigned(places.size()));
    for (const Place& place : places) {
        captureFru(query, place);
        query.progress().step();
    }
}

} // namespace Tool
