#include "sim/profile/rows.h"

namespace Sim::Rows
{

uint32_t get(const Bytes& record, Piece piece)
{
    const uint32_t byte = piece.at < record.size() ? record[piece.at] : 0u;
    return byte >> piece.shift & ((1u << piece.width) - 1);
}

void set(Bytes& record, Piece piece, uint32_t value)
{
    const uint32_t mask = ((1u << piece.width) - 1) << piece.shift;
    if (piece.at < record.size())
        record[piece.at] =
            uint8_t((record[piece.at] & ~mask) | (value << piece.shift & mask));
}

uint32_t get(const Bytes& record, const Row& row)
{
    const uint32_t high = get(record, row.high);
    return get(record, row.low) | high << row.low.width;
}

void set(Bytes& record, const Row& row, uint32_t value)
{
    set(record, row.low, value);
    set(record, row.high, value >> row.low.width);
}

void describeRow(Fields& io, Bytes& record, const Row& row)
{
    const int width = row.low.width + row.high.width;
    const uint32_t max = (1u << width) - 1;
    uint32_t value = get(record, row);
    switch (row.kind) {
    case Kind::Decimal:
        io.number(row.key, value, Fields::Base::Decimal, max);
        break;
    case Kind::Hexadecimal:
        io.number(row.key, value, Fields::Base::Hexadecimal, max);
        break;
    case Kind::Signed: {
        const int32_t half = 1 << (width - 1);
        int32_t number = int32_t(value ^ uint32_t(half)) - half;
        io.integer(row.key, number, -half, half - 1);
        value = uint32_t(number) & max;
        break;
    }
    case Kind::Code:
        io.code(row.key, value, max, row.words);
        break;
    case Kind::Bits:
        io.bits(row.key, value, row.words);
        break;
    case Kind::Flag: {
        bool flag = value != 0;
        io.flag(row.key, flag);
        value = flag;
        break;
    }
    }
    set(record, row, value);
}

void describeRows(Fields& io, Bytes& record, View<Row> rows, const Bytes& usual)
{
    for (const Row& row : rows)
        if (io.reads() || get(record, row) != get(usual, row))
            describeRow(io, record, row);
}

} // namespace Sim::Rows
