/// Which bits of a record a key of the profile stands for, as tables.
#ifndef VEK_SIM_PROFILE_ROWS_H
#define VEK_SIM_PROFILE_ROWS_H

#include "sim/profile/fields.h"

namespace Sim::Rows
{

struct Piece
{
    uint8_t at = 0, shift = 0, width = 0;
};

enum class Kind
{
    Decimal,
    Hexadecimal,
    Signed,
    Code,
    Bits,
    Flag
};

struct Row
{
    const char* key;
    Kind kind;
    Words words;
    Piece low;
    Piece high; ///< The bits above those.
};

/// Bits outside the record read as 0, and are not set.
uint32_t get(const Bytes& record, Piece piece);
uint32_t get(const Bytes& record, const Row& row);
void set(Bytes& record, Piece piece, uint32_t value);
void set(Bytes& record, const Row& row, uint32_t value);

void describeRow(Fields& io, Bytes& record, const Row& row);

/// What is as `usual` need not be written.
void describeRows(Fields& io, Bytes& record, View<Row> rows,
                  const Bytes& usual);

} // namespace Sim::Rows

#endif
