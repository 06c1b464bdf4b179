/// FRU devices and what they hold (IPMI v2.0, section 34 and 43.8).
///
/// Another subcommand shows them so:
///   std::vector<FruDevice> frus = collectFrus(device, fruLocators());
///   text += toTable(frus, Terminal::ofOutput());  // tools/print/fru.h
///   json["frus"] = toJson(frus);
///   gaps = gapsOf(frus);                          // tools/commands/fru.h
/// once readRecordsOnly or readRepository has read the locator records.
#ifndef VEK_TOOLS_COLLECT_FRU_H
#define VEK_TOOLS_COLLECT_FRU_H

#include <optional>
#include <string>
#include <vector>

#include <vek-ipmi/IpmiFruImage.h>

#include "tools/device.h"

namespace Tool
{

/// Where a FRU device is.
struct FruLocator
{
    std::string name;      ///< Empty without a record.
    bool isRecord = false; ///< A locator record tells of it.
    uint8_t deviceId = 0;  ///< Of a physical one, its address on the bus.
    uint8_t address = 0x20, channel = 0, lun = 0; ///< Of its controller.
    bool isLogical = true;                        ///< Reached by FRU commands.
    bool isMemory = false; ///< A memory module: SPD data, by its type.
    unsigned entityId = 0, entityInstance = 0;
    std::string entityName; ///< Empty without a record.
    Bytes record;           ///< As the library wants it; 64 bytes at most.

    bool isOwn() const; ///< Of the controller itself, at LUN 0.
};

struct FruDevice
{
    FruLocator locator;
    /// Of Get FRU Inventory Area Info; unanswered for a physical device, which
    /// is not asked.
    Completion completion;
    Ipmi::IpmiFruContents contents;

    /// Nothing is there at the moment (CBh).
    bool isAbsent() const;
    /// It ought to have been read to its end, and was not.
    bool isFailed() const;
    /// It holds the data of a memory module, which are not decoded.
    bool isSpd() const;
    /// Of the first read of bytes that are there and could not be read, of the
    /// header or of an area. An area that lies about its length or place is a
    /// fault of what the device holds.
    std::optional<Completion> readFailure() const;
};

/// A device of the controller's own that no record tells of.
FruLocator fruLocatorOf(uint8_t deviceId);

/// All that the records read so far tell of, in their order, and device 0 of
/// the controller. Sends nothing.
std::vector<FruLocator> fruLocators();

/// Reads them one by one; each is there whatever became of it.
std::vector<FruDevice> collectFrus(Device& device,
                                   const std::vector<FruLocator>& locators);

/// The bytes of one.
struct FruImage
{
    Completion completion; ///< Of what ended the read.
    bool byWords = false;  ///< Nothing was read: it is not accessed by bytes.
    Bytes bytes;           ///< As far as they could be read.
};
FruImage readFru(const FruLocator& locator);

/// Of a result of the library's, 0, a completion code or -1.
Completion completionOf(int result);

} // namespace Tool

#endif
