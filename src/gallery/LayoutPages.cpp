#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelTabCtrl.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/gallery/PageForm.h"
#include "zelvar/layout/DSplitterWnd.h"
#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/layout/cdxCDynamicPropertyPage.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPlainTextEdit>

namespace zelvar::gallery {

namespace {

using platform::ControlKind;

// Id, kind, text, x, y, width, height in dialog units, and how much of the growth each edge follows.
constexpr platform::DialogItem kItems[] = {
    {100, ControlKind::Label, Mark("&Name:"), 7, 9, 40, 8},
    {101, ControlKind::Edit, "", 50, 7, 143, 13, {0, 0, 100, 0}},
    {102, ControlKind::Group, Mark("Remarks (grows both ways)"), 7, 26, 186, 60, {0, 0, 100, 100}},
    {103, ControlKind::MultiLineEdit, "", 14, 38, 172, 42, {0, 0, 100, 100}},
    {104, ControlKind::Button, Mark("&Left half"), 7, 93, 89, 14, {0, 100, 50, 100}},
    {105, ControlKind::Button, Mark("&Right half"), 104, 93, 89, 14, {50, 100, 100, 100}},
    {1, ControlKind::DefaultButton, Mark("OK"), 83, 113, 50, 14, {100, 100, 100, 100}},
    {2, ControlKind::Button, Mark("Cancel"), 143, 113, 50, 14, {100, 100, 100, 100}},
};
constexpr platform::DialogTemplate kTemplate{9101, Mark("Dynamic dialog"), 200, 134, kItems};

void FillIn(QWidget &window) {
    if (auto *const name = platform::GetDlgItem<QLineEdit>(window, 101))
        name->setText(QStringLiteral("Nuclei, plate 3"));
    if (auto *const remarks = platform::GetDlgItem<QPlainTextEdit>(window, 103)) {
        remarks->setPlainText(platform::Shown("Pull the window's corner:\nevery control follows by its four shares."));
        remarks->setAccessibleName(platform::Shown("Remarks"));
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
    tabs->AddTab(new PlayChild, Translated("Page"));
    page->AddWide("Property pages", tabs, true);
    page->AddButton("&Open as a dialog", [page] {
        PlayDialog dialog(page);
        page->SayAnswer([&] {
            return dialog.DoModal() == 1 ? Translated("OK; the dialog comes back where it was and as large")
                                         : Translated("Cancelled");
        });
    });
    return page;
}

QWidget *MakeTextPane() {
    auto *const pane = new QPlainTextEdit(platform::Shown("Drag a bar, or press the button below and use the arrows."));
    pane->setTabChangesFocus(true);
    pane->setAccessibleName(platform::Shown("Text"));
    return pane;
}

QWidget *MakeListPane() {
    auto *const pane = new QListWidget;
    pane->setAccessibleName(platform::Shown("Channels"));
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
    auto const told = [page](char const *what, int done) {
        page->Say(done != 0 ? what : Mark("There is no room for more"));
    };
    page->AddButton("&Bars by keyboard", [page, splitter] {
        page->Say(splitter->MoveBarsByKeyboard() ? Mark("Arrows move the bar, Tab goes to the next one")
                                                 : Mark("There is no bar"));
    });
    page->AddButton("Split &row", [=] {
        int cur = 0;
        int ideal = 0;
        int min = 0;
        splitter->GetRowInfo(splitter->GetRowCount() - 1, cur, ideal, min);
        told(Mark("A row more"), splitter->StaticSplitRow(cur / 2, &kTextPane));
    });
    page->AddButton("Split &column", [=] {
        int cur = 0;
        int ideal = 0;
        int min = 0;
        splitter->GetColumnInfo(splitter->GetColumnCount() - 1, cur, ideal, min);
        told(Mark("A column more"), splitter->StaticSplitColumn(cur / 2, &kTextPane));
    });
    page->AddButton("&Delete the last row", [=] { splitter->StaticDeleteRow(splitter->GetRowCount() - 1); });
    return page;
}

} // namespace

std::vector<Page> LayoutPages() {
    return {
        {"layout", Mark("Dynamic layout"),
         "cdxCDynamicDialog cdxCDynamicPropertyPage cdxCDynamicWnd cdxCDynamicWndEx cdxCSizeIconCtrl", MakeLayoutPage},
        {"splitter", Mark("Splitter"), "DSplitterWnd SplitterBar", MakeSplitterPage},
    };
}

} // namespace zelvar::gallery
