#include "zelvar/opends/form/HtmlForm.h"

#include "zelvar/base/Translation.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <string_view>

#include <libxml/HTMLparser.h>

namespace zelvar {

namespace {

constexpr int kMaxDepth = 256; // of elements; the parser itself stops about there
constexpr int kMaxSpan = 100;

struct FreeDocument {
    void operator()(xmlDoc *document) const { xmlFreeDoc(document); }
};

std::string_view View(xmlChar const *text) {
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<char const *>(text));
}

DString Attribute(xmlNode const *element, char const *name) {
    for (xmlAttr const *attribute = element->properties; attribute != nullptr; attribute = attribute->next)
        if (View(attribute->name) == name)
            return attribute->children == nullptr ? DString() : DString(View(attribute->children->content));
    return {};
}

bool HasAttribute(xmlNode const *element, char const *name) {
    for (xmlAttr const *attribute = element->properties; attribute != nullptr; attribute = attribute->next)
        if (View(attribute->name) == name)
            return true;
    return false;
}

int IntAttribute(xmlNode const *element, char const *name, int fallback) {
    DString const text = Attribute(element, name);
    int value = fallback;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }

/// Runs of white space become one blank. A blank at an end is kept: words of neighbouring pieces must not run together.
DString Collapsed(std::string_view text) {
    DString result;
    for (char const c : text) {
        if (!IsSpace(c))
            result += c;
        else if (result.empty() || result.back() != ' ')
            result += ' ';
    }
    return result;
}

DString AllText(xmlNode const *element, int depth = 0) {
    DString text;
    for (xmlNode const *child = element->children; child != nullptr && depth < kMaxDepth; child = child->next)
        text += child->type == XML_TEXT_NODE ? DString(View(child->content)) : AllText(child, depth + 1);
    return text;
}

DString TrimmedText(xmlNode const *element) { return DString(Trimmed(Collapsed(AllText(element)))); }

bool OneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Walks the parsed document and collects what is shown.
class FormBuilder {
public:
    static void Collect(xmlNode const *first, std::vector<FormNode> &out, bool bold, int depth) {
        if (depth > kMaxDepth)
            return;
        for (xmlNode const *node = first; node != nullptr; node = node->next) {
            if (node->type == XML_TEXT_NODE)
                AddText(node, out, bold);
            else if (node->type == XML_ELEMENT_NODE)
                AddElement(node, out, bold, depth);
        }
    }

private:
    static void AddText(xmlNode const *node, std::vector<FormNode> &out, bool bold) {
        DString text = Collapsed(View(node->content));
        if (text.empty() || (text == " " && (out.empty() || out.back().kind != FormNode::Kind::Text)))
            return;
        if (!out.empty() && out.back().kind == FormNode::Kind::Text && out.back().bold == bold) {
            out.back().text += text;
            return;
        }
        FormNode piece;
        piece.text = std::move(text);
        piece.bold = bold;
        out.push_back(std::move(piece));
    }

    static void AddElement(xmlNode const *element, std::vector<FormNode> &out, bool bold, int depth) {
        std::string_view const name = View(element->name);
        if (OneOf(name, {"script", "style", "head", "title", "template", "noscript", "iframe", "object"}))
            return;
        if (name == "input")
            AddInput(element, out);
        else if (name == "select")
            AddSelect(element, out);
        else if (name == "textarea")
            AddTextArea(element, out);
        else if (name == "button")
            AddButton(element, TrimmedText(element), out);
        else if (name == "br" || name == "hr")
            out.push_back(Plain(name == "br" ? FormNode::Kind::LineBreak : FormNode::Kind::Rule));
        else if (name == "table")
            AddTable(element, out, bold, depth);
        else if (OneOf(name, {"p",  "div", "li", "ul", "ol", "form", "fieldset", "legend",  "body", "html",  "h1", "h2",
                              "h3", "h4",  "h5", "h6", "dl", "dt",   "dd",       "section", "pre",  "center"}))
            AddBlock(element, out, bold || OneOf(name, {"h1", "h2", "h3", "h4", "h5", "h6", "legend"}), depth);
        else
            Collect(element->children, out, bold || OneOf(name, {"b", "strong", "th"}), depth + 1);
    }

    static FormNode Plain(FormNode::Kind kind) {
        FormNode node;
        node.kind = kind;
        return node;
    }

    static FormNode Control(xmlNode const *element, FormNode::Kind kind) {
        FormNode node = Plain(kind);
        node.name = Attribute(element, "name");
        node.id = Attribute(element, "id");
        node.value = Attribute(element, "value");
        node.checked = HasAttribute(element, "checked");
        node.disabled = HasAttribute(element, "disabled");
        return node;
    }

    static void AddInput(xmlNode const *element, std::vector<FormNode> &out) {
        DString type = Attribute(element, "type");
        std::transform(type.begin(), type.end(), type.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
        if (OneOf(type, {"submit", "button", "reset", "image"})) {
            DString const value = Attribute(element, "value");
            AddButton(element, value.empty() && type == "submit" ? Translated("Submit") : value, out);
            return;
        }
        FormNode::Kind kind = FormNode::Kind::TextField;
        if (type == "checkbox")
            kind = FormNode::Kind::CheckBox;
        else if (type == "radio")
            kind = FormNode::Kind::RadioButton;
        else if (type == "hidden")
            kind = FormNode::Kind::Hidden;
        FormNode node = Control(element, kind);
        // A type that is not known reads as "text", as in a browser.
        node.inputType = OneOf(type, {"checkbox", "radio", "hidden", "password", "file"}) ? type : "text";
        node.size = std::clamp(IntAttribute(element, "size", 0), 0, 200);
        out.push_back(std::move(node));
    }

    static void AddSelect(xmlNode const *element, std::vector<FormNode> &out) {
        FormNode node = Control(element, FormNode::Kind::Select);
        AddChoices(element, node.choices, 0);
        bool const chosen =
            std::any_of(node.choices.begin(), node.choices.end(), [](FormChoice const &c) { return c.selected; });
        if (!chosen && !node.choices.empty())
            node.choices.front().selected = true;
        out.push_back(std::move(node));
    }

    static void AddChoices(xmlNode const *parent, std::vector<FormChoice> &choices, int depth) {
        for (xmlNode const *child = parent->children; child != nullptr && depth < kMaxDepth; child = child->next) {
            if (child->type != XML_ELEMENT_NODE)
                continue;
            if (View(child->name) != "option") {
                AddChoices(child, choices, depth + 1);
                continue;
            }
            DString text = TrimmedText(child);
            DString value = HasAttribute(child, "value") ? Attribute(child, "value") : text;
            choices.push_back({std::move(value), std::move(text), HasAttribute(child, "selected")});
        }
    }

    static void AddTextArea(xmlNode const *element, std::vector<FormNode> &out) {
        FormNode node = Control(element, FormNode::Kind::TextArea);
        node.value = AllText(element);
        node.size = std::clamp(IntAttribute(element, "rows", 0), 0, 50);
        out.push_back(std::move(node));
    }

    static void AddButton(xmlNode const *element, DString caption, std::vector<FormNode> &out) {
        FormNode node = Control(element, FormNode::Kind::Button);
        node.text = std::move(caption);
        out.push_back(std::move(node));
    }

    static void AddBlock(xmlNode const *element, std::vector<FormNode> &out, bool bold, int depth) {
        FormNode block = Plain(FormNode::Kind::Block);
        Collect(element->children, block.children, bold, depth + 1);
        if (!block.children.empty())
            out.push_back(std::move(block));
    }

    static void AddTable(xmlNode const *element, std::vector<FormNode> &out, bool bold, int depth) {
        FormNode table = Plain(FormNode::Kind::Table);
        AddRows(element, table.children, bold, depth + 1);
        if (!table.children.empty())
            out.push_back(std::move(table));
    }

    static void AddRows(xmlNode const *parent, std::vector<FormNode> &rows, bool bold, int depth) {
        for (xmlNode const *child = parent->children; child != nullptr && depth < kMaxDepth; child = child->next) {
            if (child->type != XML_ELEMENT_NODE)
                continue;
            if (View(child->name) == "tr")
                AddRow(child->children, rows, bold, depth);
            else if (IsCell(child))
                AddStrayCell(child, rows, bold, depth);
            else
                AddRows(child, rows, bold, depth + 1);
        }
    }

    static bool IsCell(xmlNode const *node) {
        return node->type == XML_ELEMENT_NODE && OneOf(View(node->name), {"td", "th"});
    }

    static void AddRow(xmlNode const *first, std::vector<FormNode> &rows, bool bold, int depth) {
        FormNode row = Plain(FormNode::Kind::Row);
        for (xmlNode const *child = first; child != nullptr; child = child->next)
            if (IsCell(child))
                row.children.push_back(MakeCell(child, bold, depth));
        rows.push_back(std::move(row));
    }

    /// A cell outside any row: it stands in the last one, as in a browser.
    static void AddStrayCell(xmlNode const *cell, std::vector<FormNode> &rows, bool bold, int depth) {
        if (rows.empty())
            rows.push_back(Plain(FormNode::Kind::Row));
        rows.back().children.push_back(MakeCell(cell, bold, depth));
    }

    static FormNode MakeCell(xmlNode const *element, bool bold, int depth) {
        FormNode cell = Plain(FormNode::Kind::Cell);
        cell.span = std::clamp(IntAttribute(element, "colspan", 1), 1, kMaxSpan);
        Collect(element->children, cell.children, bold || View(element->name) == "th", depth + 1);
        return cell;
    }
};

} // namespace

FormNode ParseHtmlForm(DString const &html) {
    FormNode page;
    page.kind = FormNode::Kind::Block;
    if (html.empty() || html.size() > kMaxPageBytes)
        return page;
    std::unique_ptr<xmlDoc, FreeDocument> const document(
        htmlReadMemory(html.data(), static_cast<int>(html.size()), nullptr, "utf-8",
                       HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET));
    if (document)
        FormBuilder::Collect(xmlDocGetRootElement(document.get()), page.children, false, 0);
    return page;
}

} // namespace zelvar
