#pragma once

namespace zelvar {

/// A check that a caller hands down: whether a value is wanted.
template <class T>
class ICheck {
public:
    ICheck() = default;
    ICheck(ICheck const &) = delete;
    ICheck &operator=(ICheck const &) = delete;
    virtual ~ICheck() = default;
    [[nodiscard]] virtual bool Check(T const &value) const = 0;
};

} // namespace zelvar
