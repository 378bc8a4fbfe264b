#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"

#include <limits>
#include <optional>
#include <vector>

namespace zelvar {

/// The rule of a property's values: of what kind they are, which entries are taken, how an entry becomes a value and a
/// value is shown.
///
/// Values are texts whatever their kind: numbers with a decimal point and without blanks, "true" and "false", colours
/// as "#RRGGBB", a choice as the text of its entry.
struct ZELVAR_API PropRule {
    enum class Kind { Text, MultiLine, Integer, Real, Boolean, Choice, Color, File, Folder };

    Kind kind = Kind::Text;
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
    int decimals = -1;              ///< of a real number; as many as it needs if negative
    std::vector<DString> choices{}; ///< in the order in which they are offered

    [[nodiscard]] static PropRule MultiLine() { return {.kind = Kind::MultiLine}; }
    [[nodiscard]] static PropRule Integer(long long least = std::numeric_limits<long long>::min(),
                                          long long most = std::numeric_limits<long long>::max());
    [[nodiscard]] static PropRule Real(double least = -std::numeric_limits<double>::infinity(),
                                       double most = std::numeric_limits<double>::infinity(), int decimals = -1);
    [[nodiscard]] static PropRule Boolean() { return {.kind = Kind::Boolean}; }
    [[nodiscard]] static PropRule Choice(std::vector<DString> choices);
    [[nodiscard]] static PropRule Color() { return {.kind = Kind::Color}; }
    [[nodiscard]] static PropRule File() { return {.kind = Kind::File}; }
    [[nodiscard]] static PropRule Folder() { return {.kind = Kind::Folder}; }

    /// The value that an entry stands for; nothing for an entry that the rule does not take.
    [[nodiscard]] std::optional<DString> Read(DString const &entry) const;
    /// A value as the list shows it: "Yes" and "No" for a boolean one, anything else as it is.
    [[nodiscard]] DString Show(DString const &value) const;
    /// What the rule takes, as a sentence for the user; empty if it takes anything.
    [[nodiscard]] DString Wanted() const;

    // Texts of values and what they stand for.
    [[nodiscard]] static std::optional<ColorRef> ToColor(DString const &value);
    [[nodiscard]] static DString FromColor(ColorRef color);
    [[nodiscard]] static DString FromBool(bool on) { return on ? "true" : "false"; }
};

} // namespace zelvar
