#include "sim/model/record.h"

#include <algorithm>

namespace Sim
{

Bytes answerPiece(const Bytes& record, uint16_t nextId, const Piece& piece)
{
    constexpr size_t wholeRecord = 0xFF;
    const size_t left = record.size() - std::min(record.size(), piece.offset);
    const size_t count = piece.count == wholeRecord ? left : piece.count;
    if (piece.limit && count > piece.limit)
        return {cc::cannotReturnBytes};
    if (piece.offset > record.size() || (left == 0 && count > 0))
        return {cc::parameterOutOfRange};
    Bytes answer{cc::ok};
    append16(answer, nextId);
    const auto begin = record.begin() + std::ptrdiff_t(piece.offset);
    answer.insert(answer.end(), begin,
                  begin + std::ptrdiff_t(std::min(count, left)));
    return answer;
}

} // namespace Sim
