/// All that a FRU device holds, for people (FRU Information Storage Definition
/// v1.0 r1.3): every area with every field, faults named.
#ifndef VEK_IPMI_IPMIFRUIMAGE_H
#define VEK_IPMI_IPMIFRUIMAGE_H

#include <memory>
#include <string>
#include <vector>

#include <vek-ipmi/IpmiFruOptional.h>

namespace Ipmi
{

/// A field in UTF-8: 8-bit text, 6-bit packed ASCII and BCD plus decoded,
/// binary data in hexadecimal. Blanks at its end are left out. In texts control
/// characters are escaped, as \x1B or \u0085, and a backslash is doubled.
struct IpmiFruField
{
    std::string
        name; ///< "serial number"; "custom 1" behind those that have one.
    std::string value;
    bool binary; ///< The value is its bytes in hexadecimal.
};

/// A read ended because what is asked for lies behind the end of the device: a
/// fault of what it holds. No completion code has this number.
constexpr int fruRunsPastEnd = 0x100;

struct IpmiFruArea
{
    enum Kind
    {
        INTERNAL,
        CHASSIS,
        BOARD,
        PRODUCT,
        MULTI
    };
    Kind kind;
    unsigned offset;                     ///< Bytes from the device's start.
    std::vector<unsigned char> bytes;    ///< As far as they could be read.
    int result;                          ///< See IpmiFruContents::headerResult.
    std::vector<std::string> problems;   ///< "its checksum is wrong (sum 1Fh)".
    std::vector<IpmiFruField> fields;    ///< Of chassis, board and product.
    std::shared_ptr<IpmiFruMulti> multi; ///< Of MULTI, unless it is unusable.
};

struct IpmiFruContents
{
    /// 0; the completion code of the first exchange, -1 without an answer: then
    /// there is nothing else.
    int result = 0;
    unsigned size = 0;    ///< Bytes, as the device says.
    bool byWords = false; ///< How it is accessed.
    /// What ended a read: 0 its end, fruRunsPastEnd, the completion code of a
    /// read inside the device, -1 without a usable answer.
    int headerResult = 0;
    unsigned version = 0; ///< The header's first byte: 1, if it is one.
    std::vector<std::string> problems; ///< Of the common header.
    std::vector<IpmiFruArea> areas;    ///< In the order of the header.
};

/// What an image of a device holds, as it is saved in a file.
IpmiFruContents decodeFruImage(const unsigned char* bytes, unsigned size);

} // namespace Ipmi

#endif
