#include "zelvar/connections/Secret.h"

#include <cstring>
#include <ostream>

namespace zelvar {

Secret Secret::TakenFrom(DString &text) {
    Secret secret(text);
    Wipe(text);
    return secret;
}

Secret::~Secret() {
    if (!m_bytes.empty())
        explicit_bzero(m_bytes.data(), m_bytes.size());
}

void PrintTo(Secret const &, std::ostream *out) { *out << "***"; }

void Wipe(DString &text) {
    if (text.capacity() > 0)
        explicit_bzero(text.data(), text.capacity()); // what a longer text has left behind as well
    text.clear();
}

} // namespace zelvar
