#include "tools/collect/sel_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <list>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/collect/sel.h"

namespace Tool
{

namespace
{

constexpr size_t recordSize = sizeof(Ipmi::sel_event_record);

[[noreturn]] void fail(const char* what, const std::string& path, int reason)
{
    throw Failure{Status::failed,
                  std::string{what} + " " + path + ": " + strerror(reason), ""};
}

// A descriptor to write to; the file is whole only when finish returned.
class Writer
{
public:
    /// @param path for people.
    Writer(std::string path, int fd) : path_{std::move(path)}, fd_{fd}
    {
        if (fd_ < 0)
            fail("cannot write", path_, errno);
    }
    ~Writer()
    {
        if (fd_ >= 0)
            close(fd_);
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void add(const Bytes& bytes)
    {
        size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t n =
                write(fd_, bytes.data() + done, bytes.size() - done);
            if (n < 0 && errno != EINTR)
                fail("cannot write", path_, errno);
            done += n < 0 ? 0 : static_cast<size_t>(n);
        }
    }
    // One that is there already keeps its mode, where that is allowed.
    void takeMode()
    {
        struct stat old = {};
        if (stat(path_.c_str(), &old) == 0)
            fchmod(fd_, old.st_mode & 07777);
    }
    void finish(bool sync)
    {
        const bool synced = !sync || fsync(fd_) == 0;
        const int fd = fd_;
        fd_ = -1;
        if (close(fd) != 0 || !synced)
            fail("cannot write", path_, errno);
    }

private:
    std::string path_;
    int fd_;
};

// The file that a link leads to is replaced, not the link.
std::string resolved(const std::string& path)
{
    std::error_code ignored;
    const auto target = std::filesystem::canonical(path, ignored);
    return ignored ? path : target.string();
}

// Stands beside a file until it replaces it.
class Replacement
{
public:
    explicit Replacement(const FileContents& file)
        : path_{resolved(file.path)},
          fresh_{path_ + "." + std::to_string(getpid())}
    {
        Writer writer{path_,
                      open(fresh_.c_str(),
                           O_WRONLY | O_CLOEXEC | O_CREAT | O_EXCL, 0666)};
        try {
            writer.takeMode();
            writer.add(file.bytes);
            writer.finish(true);
        } catch (const Failure&) {
            unlink(fresh_.c_str());
            throw;
        }
    }
    ~Replacement()
    {
        if (!done_)
            unlink(fresh_.c_str());
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    void replace()
    {
        if (rename(fresh_.c_str(), path_.c_str()) != 0)
            fail("cannot write", path_, errno);
        done_ = true;
    }

private:
    std::string path_, fresh_;
    bool done_ = false;
};

// "ipmitool sel writeraw" writes the manufacturer of an OEM record with a time
// with its most significant byte first, which the log has last (IPMI v2.0,
// 32.2).
SelBytes asInFile(SelBytes record)
{
    constexpr size_t typeAt = 2, manufacturerAt = 7;
    if (record[typeAt] >= 0xC0 && record[typeAt] <= 0xDF)
        std::swap(record[manufacturerAt], record[manufacturerAt + 2]);
    return record;
}

// Of the sensor data record that begins there, as its header says.
size_t lengthOf(const uint8_t* record, size_t available)
{
    constexpr size_t header = 5, lengthAt = 4;
    return available < header ? header : header + record[lengthAt];
}

} // namespace

Bytes toBytes(const SelLog& log)
{
    Bytes bytes;
    for (const auto& record : log.records) {
        const SelBytes raw = asInFile(bytesOf(record->record()));
        bytes.insert(bytes.end(), raw.begin(), raw.end());
    }
    return bytes;
}

SelLog selOf(const Bytes& bytes)
{
    SelLog log;
    size_t at = 0;
    for (; at + recordSize <= bytes.size(); at += recordSize) {
        SelBytes raw;
        memcpy(raw.data(), bytes.data() + at, recordSize);
        const Ipmi::sel_event_record record = recordOf(asInFile(raw));
        log.records.push_back(std::make_shared<Ipmi::IpmiSelData>(&record, 0));
    }
    log.total = static_cast<unsigned>(log.records.size());
    log.complete = at == bytes.size();
    return log;
}

// The node has a shared record once for each sensor: of those the one with the
// lowest number is the record.
Bytes toBytes(const std::vector<Bytes>& sensorRecords)
{
    constexpr size_t numberAt = 7;
    std::map<unsigned, const Bytes*> byId;
    for (const Bytes& record : sensorRecords) {
        if (lengthOf(record.data(), record.size()) != record.size())
            continue;
        const Bytes*& kept = byId[record[0] | record[1] * 0x100u];
        if (!kept ||
            (record.size() > numberAt && record[numberAt] < (*kept)[numberAt]))
            kept = &record;
    }
    Bytes bytes;
    for (const auto& entry : byId)
        bytes.insert(bytes.end(), entry.second->begin(), entry.second->end());
    return bytes;
}

bool sensorRecordsOf(const Bytes& bytes, std::vector<Bytes>& records)
{
    size_t at = 0;
    while (at < bytes.size()) {
        const size_t length = lengthOf(bytes.data() + at, bytes.size() - at);
        if (length > bytes.size() - at)
            break;
        const auto first = bytes.begin() + static_cast<ptrdiff_t>(at);
        records.emplace_back(first, first + static_cast<ptrdiff_t>(length));
        at += length;
    }
    return at == bytes.size();
}

Bytes readFile(const std::string& path)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        fail("cannot read", path, EISDIR);
    std::ifstream file{path, std::ios::binary};
    if (!file)
        fail("cannot read", path, errno);
    return Bytes{std::istreambuf_iterator<char>{file}, {}};
}

bool isOrBecomesFile(const std::string& path)
{
    struct stat found = {};
    return stat(path.c_str(), &found) != 0 || S_ISREG(found.st_mode);
}

std::string pathFor(const std::string& path, bool isWhole)
{
    return isWhole || !isOrBecomesFile(path) ? path : path + partialEnding;
}

void removeOld(const std::string& path)
{
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

void writeFiles(const std::vector<FileContents>& files)
{
    std::list<Replacement> replacements;
    for (const FileContents& file : files) {
        if (isOrBecomesFile(file.path)) {
            replacements.emplace_back(file);
            continue;
        }
        Writer writer{file.path, open(file.path.c_str(), O_WRONLY | O_CLOEXEC)};
        writer.add(file.bytes);
        writer.finish(false);
    }
    for (Replacement& replacement : replacements)
        replacement.replace();
}

} // namespace Tool
