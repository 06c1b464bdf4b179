/// Exchanges of many processes, counted in memory that they share: what one
/// of them has counted stays counted, however it ends.
#ifndef VEK_SIM_COUNTERS_H
#define VEK_SIM_COUNTERS_H

#include <cstdint>
#include <map>
#include <string>

namespace Sim
{

/// By netFn << 8 | command.
using Counts = std::map<uint16_t, uint64_t>;

class SharedCounters
{
public:
    /// For the process that reads them. False and errno: there are none.
    bool create();
    /// For one that counts. False: its exchanges are missing from the sum.
    bool join(const std::string& path);

    /// Where others of this user join, while this process lives.
    std::string path() const;

    void add(uint8_t netFn, uint8_t command);
    Counts read() const;

private:
    bool map(int descriptor);

    int descriptor_ = -1;
    uint32_t* cells_ = nullptr;
};

} // namespace Sim

#endif
