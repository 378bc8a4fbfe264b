#include "zelvar/controls/CZelTabCtrl.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/gallery/PageForm.h"
#include "zelvar/layout/DSplitterWnd.h"
#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/layout/cdxCDynamicPropertyPage.h"

#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPlainTextEdit>

namespace zelvar::gallery {

namespace {

using platform::ControlKind;

// Id, kind, text, x, y, width, height in dialog units, and how much of the growth each edge follows.
constexpr platform::DialogItem kItems[] = {
    {100, ControlKind::Label, "&Name:", 7, 9, 40, 8},
    {101, ControlKind::Edit, "", 50, 7, 143, 13, {0, 0, 100, 0}},
    {102, ControlKind::Group, "Remarks (grows both ways)", 7, 26, 186, 60, {0, 0, 100, 100}},
    {103, ControlKind::MultiLineEdit, "", 14, 38, 172, 42, {0, 0, 100, 100}},
    {104, ControlKind::Button, "&Left half", 7, 93, 89, 14, {0, 100, 50, 100}},
    {105, ControlKind::Button, "&Right half", 104, 93, 89, 14, {50, 100, 100, 100}},
    {1, ControlKind::DefaultButton, "OK", 83, 113, 50, 14, {100, 100, 100, 100}},
    {2, ControlKind::Button, "Cancel", 143, 113, 50, 14, {100, 100, 100, 100}},
};
constexpr platform::DialogTemplate kTemplate{9101, "Dynamic dialog", 200, 134, kItems};

void FillIn(QWidget &window) {
    if (auto *const name = platform::GetDlgItem<QLineEdit>(window, 101))
        name->setText(QStringLiteral("Nuclei, plate 3"));
    if (auto *const remarks = platform::GetDlgItem<QPlainTextEdit>(window, 103)) {
        remarks->setPlainText(QStringLiteral("Pull the window's corner:\nevery control follows by its four shares."));
        remarks->setAccessibleName(QStringLiteral("Remarks"));
        remarks->setTabChangesFocus(true);
    }
}

class PlayDialog : public cdxCDynamicDialog {
public:
    explicit PlayDialog(QWidget *parent) : cdxCDynamicDialog(kTemplate, parent) {}

protected:
    bool OnInitDialog() override {
        bool const done = cdxCDynamicDialog::OnInitDialog();
        FillIn(*this);
        return done;
    }
};

class PlayChild : public cdxCDynamicPropertyPage {
public:
    PlayChild() : cdxCDynamicPropertyPage(kTemplate) {}

protected:
    bool OnInitDialog() override {
        bool const done = cdxCDynamicPropertyPage::OnInitDialog();
        FillIn(*this);
        return done;
    }
};

QWidget *MakeLayoutPage() {
    auto *const page = new PageForm;
    auto *const tabs = new CZelTabCtrl;
    tabs->AddTab(new PlayChild, "Page");
    page->AddWide("Property pages", tabs, true);
    page->AddButton("&Open as a dialog", [page] {
        PlayDialog dialog(page);
        page->SayAnswer([&] {
            return dialog.DoModal() == 1 ? "OK; the dialog comes back where it was and as large" : "Cancelled";
        });
    });
    return page;
}

QWidget *MakeTextPane() {
    auto *const pane = new QPlainTextEdit(QStringLiteral("Drag a bar, or press the button below and use the arrows."));
    pane->setTabChangesFocus(true);
    pane->setAccessibleName(QStringLiteral("Text"));
    return pane;
}

QWidget *MakeListPane() {
    auto *const pane = new QListWidget;
    pane->setAccessibleName(QStringLiteral("Channels"));
    pane->addItems({QStringLiteral("DAPI"), QStringLiteral("GFP"), QStringLiteral("mCherry"), QStringLiteral("Cy5")});
    return pane;
}

constexpr PaneClass kTextPane{"text", MakeTextPane};
constexpr PaneClass kListPane{"list", MakeListPane};

QWidget *MakeSplitterPage() {
    auto *const page = new PageForm;
    auto *const splitter = new DSplitterWnd;
    splitter->CreateStaticEx(nullptr, 1, 2, 3, 3, &kTextPane, 0);
    splitter->CreateView(0, 0, &kListPane, {160, 200});
    splitter->CreateView(0, 1, &kTextPane, {300, 200});
    page->AddWide("Panes", splitter, true);
    auto const told = [page](char const *what, int done) { page->Say(done != 0 ? what : "There is no room for more"); };
    page->AddButton("&Bars by keyboard", [page, splitter] {
        page->Say(splitter->MoveBarsByKeyboard() ? "Arrows move the bar, Tab goes to the next one" : "There is no bar");
    });
    page->AddButton("Split &row", [=] {
        int cur = 0;
        int ideal = 0;
        int min = 0;
        splitter->GetRowInfo(splitter->GetRowCount() - 1, cur, ideal, min);
        told("A row more", splitter->StaticSplitRow(cur / 2, &kTextPane));
    });
    page->AddButton("Split &column", [=] {
        int cur = 0;
        int ideal = 0;
        int min = 0;
        splitter->GetColumnInfo(splitter->GetColumnCount() - 1, cur, ideal, min);
        told("A column more", splitter->StaticSplitColumn(cur / 2, &kTextPane));
    });
    page->AddButton("&Delete the last row", [=] {
        if (splitter->GetRowCount() > 1)
            splitter->StaticDeleteRow(splitter->GetRowCount() - 1);
    });
    return page;
}

} // namespace

std::vector<Page> LayoutPages() {
    return {
        {"layout", "Dynamic layout",
         "cdxCDynamicDialog cdxCDynamicPropertyPage cdxCDynamicWnd cdxCDynamicWndEx cdxCSizeIconCtrl", MakeLayoutPage},
        {"splitter", "Splitter", "DSplitterWnd SplitterBar", MakeSplitterPage},
    };
}

} // namespace zelvar::gallery
