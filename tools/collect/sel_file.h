/// Saved event logs, and saved sensor data records to read them with.
#ifndef VEK_TOOLS_COLLECT_SEL_FILE_H
#define VEK_TOOLS_COLLECT_SEL_FILE_H

#include "tools/collect/sel_log.h"

namespace Tool
{

/// The records' 16 bytes one after the other, as "ipmitool sel writeraw" has
/// them.
Bytes toBytes(const SelLog& log);

/// The whole records of such bytes; complete when nothing is left behind them.
SelLog selOf(const Bytes& bytes);

/// Sensor data records one after the other, as "ipmitool sdr dump" has them.
Bytes toBytes(const std::vector<Bytes>& sensorRecords);

/// The records of such bytes. False when they do not end with a record.
bool sensorRecordsOf(const Bytes& bytes, std::vector<Bytes>& records);

/// @throws Failure
Bytes readFile(const std::string& path);

/// What is to be in a file.
struct FileContents
{
    std::string path;
    Bytes bytes;
};

/// What is there already is replaced when all of them are written, and kept
/// when that fails; what is no file, as a pipe, is written to.
/// @throws Failure
void writeFiles(const std::vector<FileContents>& files);

/// Where to write what is not whole: what may be is not replaced by it.
constexpr char partialEnding[] = ".partial";
std::string pathFor(const std::string& path, bool isWhole);

/// Whether it is there or not.
void removeOld(const std::string& path);

/// Whether writing would make or replace a file.
bool isOrBecomesFile(const std::string& path);

} // namespace Tool

#endif
