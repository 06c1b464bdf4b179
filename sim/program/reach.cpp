#include "sim/program/reach.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>

#include <elf.h>
#include <link.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "sim/program/failure.h"

namespace Sim
{

namespace
{

[[noreturn]] void refuse(const std::string& file, const std::string& reason)
{
    throw Failure{status::cannotInvoke,
                  file + ": " + reason +
                      "; the simulation cannot reach it, so it is not "
                      "started"};
}

struct Image
{
    ElfW(Ehdr) header{};
    std::string interpreter; ///< The dynamic linker; empty: none.
};

template <typename T>
bool readAt(std::ifstream& file, uint64_t at, T& into)
{
    file.seekg(std::streamoff(at));
    return bool(file.read(reinterpret_cast<char*>(&into), sizeof into));
}

std::string readText(std::ifstream& file, uint64_t at, uint64_t size)
{
    std::string text(std::min<uint64_t>(size, 4096), 0);
    file.seekg(std::streamoff(at));
    file.read(text.data(), std::streamsize(text.size()));
    return text.substr(0, text.find('\0'));
}

/// Only as far as the class: what follows is laid out for this program's.
Image readImage(std::ifstream& file)
{
    Image image;
    readAt(file, 0, image.header);
    for (unsigned i = 0; i < image.header.e_phnum; ++i) {
        ElfW(Phdr) part{};
        const uint64_t at = image.header.e_phoff + uint64_t(i) * sizeof part;
        if (readAt(file, at, part) && part.p_type == PT_INTERP)
            image.interpreter = readText(file, part.p_offset, part.p_filesz);
        file.clear();
    }
    return image;
}

std::string baseName(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

void requireOurKind(const std::string& path, std::ifstream& file)
{
    std::ifstream self("/proc/self/exe", std::ios::binary);
    const Image own = readImage(self), image = readImage(file);
    const auto& ident = image.header.e_ident;
    if (ident[EI_CLASS] != own.header.e_ident[EI_CLASS])
        refuse(path, ident[EI_CLASS] == ELFCLASS32
                         ? "it is a 32-bit program, vek-ipmi-sim a 64-bit one"
                         : "it is a 64-bit program, vek-ipmi-sim a 32-bit one");
    if (ident[EI_DATA] != own.header.e_ident[EI_DATA] ||
        image.header.e_machine != own.header.e_machine)
        refuse(path, "it is a program for another kind of machine");
    if (image.interpreter.empty())
        refuse(path, "it is linked statically");
    if (baseName(image.interpreter) != baseName(own.interpreter))
        refuse(path, "it uses another C library (" + image.interpreter + ")");
}

/// The loader ignores a preloaded library in these.
void requireNoPrivileges(const std::string& path)
{
    struct stat status;
    if (stat(path.c_str(), &status) == 0 &&
        (status.st_mode & (S_ISUID | S_ISGID)))
        refuse(path,
               status.st_mode & S_ISUID ? "it is set-uid" : "it is set-gid");
    if (getxattr(path.c_str(), "security.capability", nullptr, 0) > 0)
        refuse(path, "it has file capabilities");
}

/// Of a "#!" line; a text without one is the shell's.
std::string interpreterOf(const std::string& firstLine)
{
    if (firstLine.compare(0, 2, "#!") != 0)
        return "/bin/sh";
    std::istringstream words(firstLine.substr(2));
    std::string interpreter;
    words >> interpreter;
    return interpreter;
}

void requireReachable(const std::string& path, int depth)
{
    constexpr int deepest = 5; // As the kernel has it.
    std::ifstream file(path, std::ios::binary);
    char magic[SELFMAG] = {};
    if (!file.is_open() || (file.read(magic, SELFMAG), file.bad()))
        refuse(path, std::string("what it is cannot be seen: ") +
                         std::strerror(errno));
    file.clear();
    if (std::memcmp(magic, ELFMAG, SELFMAG) == 0) {
        requireNoPrivileges(path);
        requireOurKind(path, file);
        return;
    }
    file.seekg(0);
    std::string firstLine;
    std::getline(file, firstLine);
    const std::string interpreter = interpreterOf(firstLine);
    if (depth == deepest)
        refuse(path, "its interpreters have no end");
    if (access(interpreter.c_str(), X_OK) != 0)
        throw Failure{status::cannotInvoke, path + ": its interpreter " +
                                                interpreter + ": " +
                                                std::strerror(errno)};
    requireReachable(interpreter, depth + 1);
}

/// 0, or why the file cannot be run.
int runError(const std::string& file)
{
    struct stat status;
    if (stat(file.c_str(), &status) != 0)
        return errno;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    return access(file.c_str(), X_OK) == 0 ? 0 : errno;
}

} // namespace

std::string findCommandFile(const std::string& word)
{
    int error = ENOENT;
    if (word.find('/') != std::string::npos) {
        error = runError(word);
        if (error == 0)
            return word;
    } else if (!word.empty()) {
        const char* path = getenv("PATH");
        std::istringstream folders(path ? path : "/bin:/usr/bin");
        for (std::string folder; std::getline(folders, folder, ':');) {
            std::string file = (folder.empty() ? "." : folder) + "/" + word;
            const int found = runError(file);
            if (found == 0)
                return file;
            // As the shells: a file that is no program hides none behind it.
            if (found == EACCES)
                error = found;
        }
    }
    throw Failure{error == ENOENT || error == ENOTDIR ? status::noSuchCommand
                                                      : status::cannotInvoke,
                  word + ": " + std::strerror(error)};
}

void requireReachable(const std::string& file)
{
    requireReachable(file, 0);
}

} // namespace Sim
