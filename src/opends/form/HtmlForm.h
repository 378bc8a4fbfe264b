#pragma once

#include "zelvar/base/DString.h"

#include <cstddef>
#include <vector>

namespace zelvar {

/// One choice of a select element.
struct FormChoice {
    DString value; ///< its value, or its text where the page gives none
    DString text;
    bool selected = false;
};

/// What stands in the flow of a page: a piece of text, a control, or something that holds such pieces.
struct FormNode {
    enum class Kind {
        Text, ///< `text`; `bold` for headings and strong text
        LineBreak,
        Rule,
        TextField, ///< an input of type text, or of a type that is not known here
        TextArea,
        CheckBox,
        RadioButton,
        Select,
        Button, ///< `text` is its caption
        Hidden,
        Block, ///< a paragraph, list item or the like: `children` on lines of their own
        Table, ///< `children` are Rows
        Row,   ///< `children` are Cells
        Cell,
    };
    Kind kind = Kind::Text;
    DString name;
    DString id;
    DString value;
    DString text;
    DString hint;      ///< what a control is for; for pages alone that are no files
    DString inputType; ///< as the page writes it, lower case
    bool checked = false;
    bool disabled = false;
    bool bold = false;
    int size = 0; ///< columns of a text field, rows of a text area; 0 for the default
    int span = 1; ///< columns that a cell covers
    std::vector<FormChoice> choices;
    std::vector<FormNode> children;
};

/// The page as a tree of what a user sees and fills in, in the page's order. Broken markup is repaired as a browser
/// would; scripts and styles are dropped, unknown elements become their children. Nothing is run and nothing fetched. A
/// page above 1 MB, or one that is no HTML at all, gives an empty block. Elements nested deeper than 256 levels are
/// left out.
[[nodiscard]] FormNode ParseHtmlForm(DString const &html);

inline constexpr std::size_t kMaxPageBytes = std::size_t{1} << 20U;

} // namespace zelvar
