/// Entities as a tree.
#ifndef VEK_TOOLS_PRINT_ENTITY_H
#define VEK_TOOLS_PRINT_ENTITY_H

#include "tools/collect/entity.h"
#include "tools/collect/repository.h"
#include "tools/print/json.h"
#include "tools/print/terminal.h"

namespace Tool
{

struct TreeStyle
{
    bool sensors = true;
    bool unicode = true;
    size_t width = 80; ///< Columns to wrap at.

    /// For standard output: 80 columns without a terminal; ASCII lines when the
    /// environment asks for another character set than UTF-8.
    static TreeStyle ofOutput();
};

/// Each entity below what contains it, with what belongs to it. One that is
/// contained several times is drawn at each place, what it has at the first.
std::string toTree(const std::vector<Entity>& entities, const TreeStyle& style);

/// "System Board 1"; with the id where that has no name of its own.
std::string entityText(const Entity& entity);

Json toJson(const std::vector<Entity>& entities, const Repository& repository);

} // namespace Tool

#endif
