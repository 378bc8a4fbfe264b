#include "zelvar/opends/form/HtmlForm.h"

#include "support/Test.h"
#include "zelvar/opends/form/OptionText.h"

namespace zelvar {
namespace {

using Kind = FormNode::Kind;

std::vector<FormNode const *> AllOf(FormNode const &page, Kind kind) {
    std::vector<FormNode const *> found;
    std::function<void(FormNode const &)> const walk = [&](FormNode const &node) {
        if (node.kind == kind)
            found.push_back(&node);
        for (FormNode const &child : node.children)
            walk(child);
    };
    walk(page);
    return found;
}

TEST(HtmlForm, UnclosedCellsAndOptionsAreRepairedInThePagesOrder) {
    FormNode const page = ParseHtmlForm("<form><table><tr><td>Level<td><input name=level value=3 size=4>"
                                        "<tr><td>Mode<td><select name=mode><option value=a>Alpha<option selected>Beta"
                                        "</select></table><input type=submit id=Apply value=Apply>");
    ASSERT_EQ(AllOf(page, Kind::Row).size(), 2U);
    auto const fields = AllOf(page, Kind::TextField);
    ASSERT_EQ(fields.size(), 1U);
    EXPECT_EQ(fields[0]->name + "=" + fields[0]->value, "level=3");
    EXPECT_EQ(fields[0]->size, 4);
    auto const selects = AllOf(page, Kind::Select);
    ASSERT_EQ(selects.size(), 1U);
    DString choices;
    for (auto const &choice : selects[0]->choices)
        choices += choice.value + (choice.selected ? "* " : " ");
    EXPECT_EQ(choices, "a Beta* ");
    ASSERT_EQ(AllOf(page, Kind::Button).size(), 1U);
    EXPECT_EQ(AllOf(page, Kind::Button)[0]->id, "Apply");
}

TEST(HtmlForm, WordsOfNeighbouringPiecesDoNotRunTogetherAndScriptsStayOut) {
    FormNode const page = ParseHtmlForm("<p>Options <i>for</i>\n sample <script>alert('x')</script>files</p>");
    DString text;
    for (FormNode const *piece : AllOf(page, Kind::Text))
        text += piece->text;
    EXPECT_EQ(DString(Trimmed(text)), "Options for sample files");
    FormNode const fields = ParseHtmlForm("<div> <input type=submit> <input type=Button value=Go> x<b> </b>y</div>"
                                          "<input type=reset><button value=r>Run <b>it</b> </button>");
    EXPECT_EQ(AllOf(fields, Kind::Text).size(), 3U) << "no blank of its own but between words";
    DString buttons;
    for (FormNode const *button : AllOf(fields, Kind::Button))
        buttons += button->text + "|";
    EXPECT_EQ(buttons, "Submit|Go||Run it|");
}

TEST(HtmlForm, InputTypesThatAreNotKnownReadAsText) {
    FormNode const page = ParseHtmlForm("<input name=a type=number><input name=b><input name=c type=CHECKBOX checked>");
    ASSERT_EQ(AllOf(page, Kind::TextField).size(), 2U);
    EXPECT_EQ(AllOf(page, Kind::TextField)[0]->inputType + std::to_string(AllOf(page, Kind::TextField)[0]->size),
              "text0");
    ASSERT_EQ(AllOf(page, Kind::CheckBox).size(), 1U);
    EXPECT_TRUE(AllOf(page, Kind::CheckBox)[0]->checked);
}

TEST(HtmlForm, HostilePagesEndQuicklyWithWhatTheyHold) {
    DString nested;
    for (int i = 0; i < 100000; ++i)
        nested += "<div>";
    EXPECT_NO_THROW(std::ignore = ParseHtmlForm(nested + "<input name=x>"));
    EXPECT_TRUE(ParseHtmlForm(DString(kMaxPageBytes + 1, 'x')).children.empty() && ParseHtmlForm("").children.empty());
    EXPECT_NO_THROW(std::ignore = ParseHtmlForm(DString("<a\0b\xff<<<>>&#xffffffff;<input name='", 34)));
    EXPECT_EQ(AllOf(ParseHtmlForm("<table><td colspan=999999999>x</table>"), Kind::Cell).at(0)->span, 100);
}

TEST(OptionText, FieldsAreJoinedByNameWithTheirOperators) {
    test::Rows<char const *, std::vector<OptionField>, char const *> const cases = {
        {"none", {}, ""},
        {"two text fields", {{"b", "2", false}, {"a", "1", false}}, "a=1&b=2"},
        {"operator", {{"b", "2", false}, {"b.op", ">", true}}, "b>2&b.op=>"},
        {"an operator is a select only", {{"b", "2", false}, {"b.op", ">", false}}, "b=2&b.op=>"},
        {"a select counts after a text field", {{"a", "s", true}, {"a", "t", false}}, "a=s"}};
    for (auto const &[name, fields, text] : cases)
        EXPECT_EQ(MakeOptionText(fields), text) << name;
}

} // namespace
} // namespace zelvar
