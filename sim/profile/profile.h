/// Controllers described in JSON (docs/SIMULATOR.md).
#ifndef VEK_SIM_PROFILE_PROFILE_H
#define VEK_SIM_PROFILE_PROFILE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sim/model/bmc.h"
#include "sim/profile/mistake.h"

namespace Sim
{

/// What a profile file holds.
struct Profile
{
    std::string description;
    BmcState state;
    std::vector<std::string> faults; ///< Rules as parseFault takes them.
};

/// No value when there is a mistake; all of them are named.
std::optional<Profile> readProfile(const std::string& text, Mistakes& mistakes);

Mistakes checkProfile(const std::string& text);

/// A text that readProfile makes the same profile of.
std::string writeProfile(const Profile& profile);

/// Text of a built-in profile, or of the file with that path. No value, with
/// the reason as a mistake, when there is neither.
std::optional<std::string> findProfile(const std::string& nameOrPath,
                                       Mistakes& mistakes);

/// A file's bytes. No value leaves the reason in errno.
std::optional<std::string> readFile(const std::string& path);

std::vector<std::string> builtinProfileNames();

/// The controller of a profile's text alone, without its faults; null when
/// there is a mistake.
std::unique_ptr<Bmc> loadProfile(const std::string& text, Mistakes& mistakes);

/// The controller of a built-in profile. Throws std::invalid_argument for a
/// name that is not one.
std::unique_ptr<Bmc> builtinProfile(const std::string& name = "two-socket");

/// A repository of records, each as one JSON object of the profile's format.
/// Records without an id get the next. Throws std::invalid_argument.
Repository makeRepository(const std::vector<std::string>& records);

/// An event log of records in the same way; a text that does not begin with a
/// brace is the bytes of one in hexadecimal.
EventLog makeEventLog(const std::vector<std::string>& records);

/// A FRU device in the same way; mere bytes are device 0's contents.
FruDevice makeFruDevice(const std::string& text);

/// A LAN channel's configuration as one JSON object.
LanConfig makeLanConfig(const std::string& text);

} // namespace Sim

#endif
