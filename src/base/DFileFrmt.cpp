#include "zelvar/base/DFileFrmt.h"

#include <algorithm>
#include <cstring>

namespace zelvar {

namespace {

DString Text(char const *text) { return text == nullptr ? DString() : DString(text); }

} // namespace

DFileFrmt::DFileFrmt(char const *id, char const *name, char const *extensions)
    : m_id(Text(id)), m_name(Text(name)), m_extensions(Text(extensions)) {}

bool DFileFrmt::GetFilter(char *buffer, std::size_t size) const {
    std::size_t const used = strnlen(buffer, size);
    std::size_t const needed = m_name.size() + m_extensions.size() + 2;
    if (used + needed >= size)
        return false;
    char *end = buffer + used;
    for (DString const *field : {&m_name, &m_extensions}) {
        // A zero byte would end the text as well.
        end = std::transform(field->begin(), field->end(), end, [](char c) { return c == '|' || c == '\0' ? ' ' : c; });
        *end++ = '|';
    }
    *end = '\0';
    return true;
}

} // namespace zelvar
