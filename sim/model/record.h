/// What the commands that read records have in common (IPMI v2.0, 31.5,
/// 33.12): little-endian fields, and pieces of a record.
#ifndef VEK_SIM_MODEL_RECORD_H
#define VEK_SIM_MODEL_RECORD_H

#include <cstddef>

#include "sim/model/message.h"

namespace Sim
{

constexpr uint16_t firstRecord = 0x0000, lastRecord = 0xFFFF;

inline uint16_t word(const Bytes& data, size_t at)
{
    return uint16_t(data[at] | data[at + 1] << 8);
}

inline void append16(Bytes& bytes, size_t value)
{
    append(bytes, {uint8_t(value), uint8_t(value >> 8)});
}

inline void append32(Bytes& bytes, uint32_t value)
{
    append16(bytes, value & 0xFFFF);
    append16(bytes, value >> 16);
}

struct Piece
{
    size_t offset, count; ///< Count FFh: all the rest.
    size_t limit;         ///< More at once are CAh; 0: no limit.
};

/// The whole answer: completion code, the next record's id, the bytes.
Bytes answerPiece(const Bytes& record, uint16_t nextId, const Piece& piece);

/// The id after `id`: never one of those that stand for first and last.
constexpr uint16_t idAfter(uint16_t id)
{
    return id >= 0xFFFE ? uint16_t{1} : uint16_t(id + 1);
}

} // namespace Sim

#endif
