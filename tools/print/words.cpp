#include "tools/print/words.h"

#include <algorithm>

namespace Tool
{

std::string lowered(std::string text)
{
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::string asWord(std::string text)
{
    std::replace(text.begin(), text.end(), ' ', '-');
    return lowered(std::move(text));
}

namespace
{

template <typename Texts>
std::string join(const Texts& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : ", ") + text;
    return all;
}

} // namespace

std::string joined(const std::set<std::string>& texts)
{
    return join(texts);
}

std::string joined(const std::vector<std::string>& texts)
{
    return join(texts);
}

} // namespace Tool
