#pragma once

#include <dlfcn.h>

namespace zelvar {

/// A library of the system that is loaded when it is first needed, and stays loaded. What uses it does without where it
/// is not installed.
class LateLibrary {
public:
    /// "libgio-2.0.so.0"
    explicit LateLibrary(char const *file) : m_handle(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {}

    [[nodiscard]] bool IsLoaded() const { return m_handle != nullptr; }
    /// Points `function` to the library's function of that name; false, and null, if there is none.
    template <class Function>
    bool Find(char const *name, Function *&function) const {
        function = m_handle == nullptr ? nullptr : reinterpret_cast<Function *>(dlsym(m_handle, name));
        return function != nullptr;
    }

private:
    void *m_handle;
};

} // namespace zelvar
