#include "zelvar/base/Translation.h"
#include "zelvar/controls/CDownBmpButton.h"
#include "zelvar/controls/CFloatEdit.h"
#include "zelvar/controls/CGrpCtrl.h"
#include "zelvar/controls/CZelButton.h"
#include "zelvar/controls/CZelColorComboBox.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/controls/CZelCustomButton.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/controls/CZelImgComboBox.h"
#include "zelvar/controls/ColorStatic.h"
#include "zelvar/controls/GUITools.h"
#include "zelvar/controls/HyperLink.h"
#include "zelvar/controls/IconTabCtrl.h"
#include "zelvar/controls/ZelSliderCtrl.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/gallery/PageForm.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QVBoxLayout>

#include <memory>

namespace zelvar::gallery {

namespace {

/// Controls of one kind side by side, the last one disabled as a rule.
QWidget *SideBySide(std::initializer_list<QWidget *> controls) {
    auto *const row = new QWidget;
    auto *const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget *control : controls)
        layout->addWidget(control);
    layout->addStretch();
    return row;
}

template <class Button>
Button *MakeButton(PageForm &page, char const *text, char const *picture, char const *tip) {
    auto *const button = new Button;
    button->SetWindowText(Translated(text));
    button->SetImage(picture);
    button->SetTooltip(Translated(tip));
    QObject::connect(button, &QPushButton::clicked, &page, [&page, button, tip] {
        if (button->isCheckable())
            page.Say(Format(button->GetCheck() ? Translated("%s: down") : Translated("%s: up"), Translated(tip)));
        else
            page.Say(tip);
    });
    return button;
}

QWidget *PlainButtons(PageForm &page) {
    auto *const add =
        MakeButton<CZelButton>(page, Mark("Add to fa&vorites"), "star", Mark("Adds the folder to the favorites"));
    auto *const above = MakeButton<CZelButton>(page, Mark("Share"), "share", Mark("Picture above the text"));
    above->SetImageSide(CZelButton::ImageSide::Above);
    auto *const recursive = MakeButton<CZelButton>(page, "", "recursive", Mark("With folders below"));
    recursive->SetCheckStyle();
    auto *const flat = MakeButton<CZelButton>(page, Mark("Flat"), "home", Mark("Has a frame under the mouse"));
    flat->SetFlatStyle();
    auto *const disabled = MakeButton<CZelButton>(page, Mark("Disabled"), "star", Mark("Cannot be pressed"));
    disabled->setEnabled(false);
    return SideBySide({add, above, recursive, flat, disabled});
}

QWidget *AlignedButtons(PageForm &page) {
    std::vector<CZelButton *> buttons;
    for (auto const &[text, align] :
         {std::pair{Mark("Before"), CZelButton::Align::Before}, std::pair{Mark("Center"), CZelButton::Align::Center},
          std::pair{Mark("Behind"), CZelButton::Align::Behind}}) {
        auto *const button = MakeButton<CZelButton>(page, text, "image", text);
        button->SetAlign(align);
        button->SetImageSide(align == CZelButton::Align::Behind ? CZelButton::ImageSide::Behind
                                                                : CZelButton::ImageSide::Before);
        button->setMinimumWidth(button->sizeHint().width() * 3 / 2);
        buttons.push_back(button);
    }
    return SideBySide({buttons[0], buttons[1], buttons[2]});
}

QWidget *CustomButtons(PageForm &page) {
    auto const make = [&page](char const *text, ColorRef top, ColorRef bottom) {
        auto *const button = MakeButton<CZelCustomButton>(page, text, "", text);
        button->SetFaceColor(top, bottom);
        return button;
    };
    auto *const run = make(Mark("Run the analysis"), Rgb(120, 200, 120), Rgb(40, 130, 60));
    auto *const stop = make(Mark("Stop"), Rgb(230, 120, 110), Rgb(180, 40, 40));
    stop->SetRadius(12);
    stop->SetBorder(Rgb(100, 0, 0), 2);
    auto *const hover = make(Mark("Hover"), Rgb(240, 240, 250), Rgb(210, 215, 240));
    hover->SetHoverColor(Rgb(255, 230, 150), Rgb(250, 200, 80));
    hover->SetTextHoverColor(Rgb(120, 40, 0));
    auto *const keep = make(Mark("Stays down"), Rgb(80, 110, 190), Rgb(40, 60, 130));
    keep->SetGradientVertical(false);
    keep->SetCheckStyle();
    auto *const disabled = make(Mark("Disabled"), Rgb(120, 200, 120), Rgb(40, 130, 60));
    disabled->setEnabled(false);
    return SideBySide({run, stop, hover, keep, disabled});
}

QWidget *DropButtons(PageForm &page) {
    auto const make = [&page](char const *tip) {
        auto *const button = new CDownBmpButton;
        button->LoadBitmaps("folder", "folder-up", "", "");
        button->SetTooltip(Translated(tip));
        auto *const menu = new QMenu(button);
        for (char const *place : {Mark("Microscope"), Mark("Satellite"), Mark("Archive")})
            menu->addAction(platform::Shown(place), &page,
                            [&page, place] { page.Say(Format(Translated("Menu: %s"), Translated(place))); });
        button->SetMenu(menu);
        QObject::connect(button, &CDownBmpButton::clicked, &page, [&page] { page.Say("Picture clicked"); });
        return button;
    };
    auto *const both = make(Mark("Opens the last folder; the arrow shows more"));
    auto *const whole = make(Mark("Shows a menu wherever it is pressed"));
    whole->SetWholeDropDown(true);
    auto *const own = make(Mark("Tells its owner instead of showing a menu"));
    own->SetMenu(nullptr);
    own->SetDropDown(true);
    QObject::connect(own, &CDownBmpButton::DropDown, &page, [&page] { page.Say("Arrow pressed"); });
    auto *const disabled = make(Mark("Disabled"));
    disabled->setEnabled(false);
    return SideBySide({both, whole, own, disabled});
}

QWidget *MakeButtonsPage() {
    auto *const page = new PageForm;
    page->Add("Buttons", PlainButtons(*page));
    page->Add("Aligned", AlignedButtons(*page));
    page->Add("In own colours", CustomButtons(*page));
    page->Add("With a menu", DropButtons(*page));
    return page;
}

/// Pictures for combo boxes and tabs, which share them.
struct Pictures {
    Pictures() {
        list.Create();
        for (char const *name : {"folder", "image", "table", "vector", "star"})
            list.Add({.name = name, .fallback = name});
    }
    static Pictures &Shared() {
        static Pictures pictures;
        return pictures;
    }
    CZelImageList list;
};
enum PictureIndex : int { kFolder, kImage, kTable, kVector, kStar };

CZelImgComboBox *MakeLayerCombo() {
    auto *const combo = new CZelImgComboBox;
    combo->SetImageList(Pictures::Shared().list.GetHandle());
    combo->AddString(Translated("Expedition"), kFolder);
    combo->AddString(Translated("Satellite image"), kImage, kStar, 1);
    combo->AddString(Translated("Near infrared"), kImage, kStar, 2);
    combo->AddString(Translated("Rivers"), kVector, kStar, 1);
    combo->AddString(Translated("Stations"), kTable, kStar, 1);
    combo->SetCurSel(1);
    return combo;
}

QWidget *MakeCombosPage() {
    auto *const page = new PageForm;
    auto const says = [page](CZelComboBox *combo) {
        QObject::connect(combo, &QComboBox::currentIndexChanged, page, [page, combo] {
            page->Say(Format(Translated("Chosen: %s"), combo->GetWindowText().c_str()));
        });
        return combo;
    };
    auto const makePlain = [] {
        auto *const combo = new CZelComboBox;
        for (char const *method : {Mark("Nearest neighbour"), Mark("Bilinear"), Mark("Bicubic"), Mark("Lanczos")})
            combo->AddString(Translated(method));
        combo->setMinimumContentsLength(16);
        combo->SetCueBanner(Translated("Resampling method"));
        return combo;
    };
    page->Add("Resampling", says(makePlain()));
    auto *const edited = makePlain();
    edited->SetEditable(true);
    page->Add("Typed", says(edited));
    auto *const layers = MakeLayerCombo();
    page->Add("Layer", says(layers));
    auto *const colors = new CZelColorComboBox;
    colors->EnableAutomatic(Translated("Automatic"), Rgb(0, 0, 0));
    colors->SetColor(Rgb(0x2E, 0x8B, 0x57));
    QObject::connect(colors, &CZelColorComboBox::ColorChanged, page, [page](ColorRef color, bool automatic) {
        page->Say(automatic ? Translated("Automatic colour") : Format(Translated("Colour 0x%06X"), color));
    });
    page->Add("Colour", colors);
    std::vector<QWidget *> const controls{edited, layers, colors};
    page->AddSwitch("Enabled", true, [controls](bool on) {
        for (QWidget *control : controls)
            control->setEnabled(on);
    });
    auto *const disabledLayers = MakeLayerCombo();
    disabledLayers->setEnabled(false);
    page->Add("Disabled", disabledLayers);
    auto *const disabledColors = new CZelColorComboBox;
    disabledColors->SetColor(Rgb(255, 0, 0));
    disabledColors->setEnabled(false);
    page->Add("Disabled colour", disabledColors);
    return page;
}

template <class Tabs>
void AddTabPages(Tabs &tabs) {
    struct Tab {
        char const *label;
        char const *text;
        int picture;
    };
    for (Tab const &tab : {Tab{Mark("Image"), Mark("10,980 by 10,980 pixels, 4 bands of 16 bits"), kImage},
                           Tab{Mark("Vectors"), Mark("Rivers: 2,310 lines; lakes: 184 areas"), kVector},
                           Tab{Mark("Table"), Mark("Stations: 96 rows, 12 columns"), kTable},
                           Tab{Mark("Disabled"), Mark("Not seen"), kFolder}}) {
        auto *const text = new QLabel(platform::Shown(tab.text));
        text->setMargin(8);
        int const index = tabs.AddTab(text, Translated(tab.label));
        if constexpr (std::is_same_v<Tabs, IconTabCtrl>)
            tabs.SetTabImage(index, tab.picture);
    }
    tabs.EnableTab(tabs.GetTabsNum() - 1, false);
}

QWidget *MakeTabsPage() {
    auto *const page = new PageForm;
    auto *const plain = new CZelTabCtrl;
    auto *const icons = new IconTabCtrl;
    auto *const small = new IconTabCtrl;
    for (CZelTabCtrl *tabs : {plain, static_cast<CZelTabCtrl *>(icons), static_cast<CZelTabCtrl *>(small)})
        QObject::connect(tabs, &QTabWidget::currentChanged, page, [page, tabs](int index) {
            page->Say(Format(Translated("Shown: %s"), tabs->GetTabLabel(index).c_str()));
        });
    AddTabPages(*plain);
    icons->SetImageList(Pictures::Shared().list.GetHandle());
    AddTabPages(*icons);
    small->SetImageList(Pictures::Shared().list.GetHandle());
    AddTabPages(*small);
    small->ShowLabels(false);
    page->AddWide("Tabs", plain, true);
    page->AddWide("Tabs with pictures", icons, true);
    page->AddWide("Tabs with pictures only", small, true);
    page->AddSwitch("Second tab", true, [=](bool on) {
        plain->ShowTab(1, on, true, false);
        icons->ShowTab(1, on, true, false);
        small->ShowTab(1, on, true, false);
    });
    page->AddSwitch("Enabled", true, [=](bool on) {
        plain->setEnabled(on);
        icons->setEnabled(on);
        small->setEnabled(on);
    });
    return page;
}

/// A number that is told in the bottom line, and its name for those who cannot see the label.
template <class Control>
Control *Named(char const *name, Control *control) {
    control->setAccessibleName(platform::Shown(name));
    return control;
}

QWidget *NumberFields(PageForm &page) {
    auto *const gain = Named(Mark("Gain"), new CFloatEdit);
    gain->SetRange(0.1, 10);
    gain->SetStep(0.1);
    gain->SetValue(2.5);
    auto *const limit = Named(Mark("Upper limit, may be empty"), new CFloatEdit);
    limit->SetAllowEmpty();
    limit->setPlaceholderText(platform::Shown("none"));
    limit->SetEmpty();
    auto *const disabled = Named(Mark("Disabled number"), new CFloatEdit);
    disabled->SetValue(-1.5e-7);
    disabled->setEnabled(false);
    for (CFloatEdit *edit : {gain, limit}) {
        QObject::connect(edit, &CFloatEdit::ValueChanged, &page, [&page, edit](double value, bool empty) {
            DString const name = platform::ToDString(edit->accessibleName());
            page.Say(empty ? Format(Translated("%s: empty"), name.c_str()) : Format("%s: %.17g", name.c_str(), value));
        });
        edit->setMaximumWidth(GUITools::DlgUnitsToPixels(*edit, {.cx = 60, .cy = 0}).cx);
    }
    disabled->setMaximumWidth(gain->maximumWidth());
    return SideBySide({gain, limit, disabled});
}

ZelSliderCtrl *MakeSlider(PageForm &page, char const *name, double first, double last, double step) {
    auto *const slider = new ZelSliderCtrl;
    slider->SetStep(step);
    slider->SetRange(first, last);
    slider->setMinimumWidth(GUITools::DlgUnitsToPixels(*slider, {.cx = 200, .cy = 0}).cx);
    QObject::connect(slider, &ZelSliderCtrl::PosChanged, &page, [&page, slider, name] {
        page.Say(Format("%s: %s", Translated(name), slider->GetPosText().c_str()));
    });
    page.Add(name, slider);
    return slider;
}

void AddSliders(PageForm &page) {
    ZelSliderCtrl *const opacity = MakeSlider(page, Mark("Opacity"), 0, 100, 1);
    opacity->SetTicFreq(25);
    opacity->SetUnit(" %");
    opacity->SetValueField(ZelSliderCtrl::ValueField::Text);
    opacity->SetPos(75);
    ZelSliderCtrl *const scale = MakeSlider(page, Mark("Magnification"), 0.01, 100, 0);
    scale->SetLogarithmic();
    scale->SetTicFreq(0);
    scale->SetValueField(ZelSliderCtrl::ValueField::Edit);
    scale->SetPos(1);
    ZelSliderCtrl *const depth = MakeSlider(page, Mark("Depth, downwards"), 0, -4000, 250);
    depth->SetTicFreq(1000);
    depth->SetUnit(" m");
    depth->SetValueField(ZelSliderCtrl::ValueField::Edit);
    depth->SetPos(-1000);
    ZelSliderCtrl *const disabled = MakeSlider(page, Mark("Disabled slider"), 0, 1, 0);
    disabled->SetTicFreq(0.25);
    disabled->SetValueField(ZelSliderCtrl::ValueField::Text);
    disabled->SetPos(0.4);
    disabled->setEnabled(false);
    ZelSliderCtrl *const upright = MakeSlider(page, Mark("Upright"), 0, 10, 1);
    upright->SetOrientation(Qt::Vertical);
    upright->SetTicFreq(5);
    upright->SetValueField(ZelSliderCtrl::ValueField::Text);
    upright->setMinimumSize(0, 5 * upright->fontMetrics().height());
    upright->SetPos(4);
}

QWidget *ColoredTexts() {
    auto const make = [](char const *text, ColorRef color, ColorRef background) {
        auto *const label = new ColorStatic;
        label->SetWindowText(Translated(text));
        label->SetTextColor(color);
        label->SetBkColor(background);
        return label;
    };
    ColorStatic *const good = make(Mark("In range"), Rgb(0, 80, 20), Rgb(210, 245, 215));
    ColorStatic *const warning = make(Mark("Saturated"), Rgb(110, 60, 0), Rgb(255, 235, 180));
    warning->SetBorder(Rgb(220, 150, 0));
    ColorStatic *const bad = make(Mark("No data"), Rgb(255, 255, 255), Rgb(170, 30, 30));
    bad->SetBorder(Rgb(90, 0, 0), 2);
    ColorStatic *const disabled = make(Mark("Disabled"), Rgb(0, 80, 20), Rgb(210, 245, 215));
    disabled->setEnabled(false);
    return SideBySide({good, warning, bad, disabled});
}

QWidget *Links(PageForm &page) {
    auto const make = [&page](char const *text, char const *url) {
        auto *const link = new HyperLink;
        link->SetURL(url);
        link->SetWindowText(Translated(text));
        QObject::connect(link, &HyperLink::Opened, &page, [&page, link](bool done) {
            page.Say(Format(done ? Translated("Opened: %s") : Translated("Not opened: %s"), link->GetURL().c_str()));
        });
        return link;
    };
    HyperLink *const visited = make(Mark("Visited"), "https://www.example.org/visited");
    visited->SetVisited(true);
    HyperLink *const disabled = make(Mark("Disabled"), "https://www.example.org/disabled");
    disabled->setEnabled(false);
    return SideBySide({make(Mark("Web page"), "https://www.example.org/"), make(Mark("Home folder"), "/home"),
                       make(Mark("Refused"), "javascript:void(0)"), visited, disabled});
}

QWidget *MakeFieldsPage() {
    auto *const page = new PageForm;
    page->Add("Numbers", NumberFields(*page));
    AddSliders(*page);
    page->Add("Texts", ColoredTexts());
    page->Add("Links", Links(*page));
    page->Say(DString()); // nothing has happened yet
    return page;
}

CGrpCtrl *MakeGroup(PageForm &page, QLayout &column, char const *title, CGrpCtrl::Mode mode) {
    auto *const group = new CGrpCtrl;
    group->SetWindowText(Translated(title));
    group->SetMode(mode);
    auto *const form = new QFormLayout(&group->Content());
    auto *const system = new CZelComboBox;
    for (char const *name : {"WGS 84 / UTM zone 33N", "ETRS89 / LAEA Europe"})
        system->AddString(name);
    system->SetCurSel(0);
    system->setMinimumContentsLength(20);
    form->addRow(platform::Shown("System"), Named(Mark("System"), system));
    auto *const size = Named(Mark("Pixel size"), new CFloatEdit);
    size->SetRange(0.01, 1000);
    size->SetValue(10);
    form->addRow(platform::Shown("Pixel size"), size);
    QObject::connect(group, &CGrpCtrl::FoldChanged, &page,
                     [&page](bool folded) { page.Say(folded ? Mark("Folded") : Mark("Unfolded")); });
    QObject::connect(group, &CGrpCtrl::CheckChanged, &page,
                     [&page](bool checked) { page.Say(checked ? Mark("Enabled") : Mark("Disabled")); });
    column.addWidget(Named(title, group));
    return group;
}

QWidget *MakeGroupsPage() {
    auto *const page = new PageForm;
    auto *const all = new QWidget;
    auto *const column = new QVBoxLayout(all);
    column->setContentsMargins(0, 0, 0, 0);
    MakeGroup(*page, *column, Mark("Plain"), CGrpCtrl::Mode::Plain);
    MakeGroup(*page, *column, Mark("Warp to another system"), CGrpCtrl::Mode::Enables);
    CGrpCtrl *const folds = MakeGroup(*page, *column, Mark("More options"), CGrpCtrl::Mode::Folds);
    MakeGroup(*page, *column, Mark("Even more options"), CGrpCtrl::Mode::Folds)->SetFolded(true);
    MakeGroup(*page, *column, Mark("Disabled"), CGrpCtrl::Mode::Folds)->setEnabled(false);
    column->addStretch();
    page->AddWide("Groups", all, true);
    page->AddSwitch("Options unfolded", true, [folds](bool on) { folds->SetFolded(!on); });
    page->Say(DString()); // nothing has happened yet
    return page;
}

QWidget *MakeToolsPage() {
    auto *const page = new PageForm;
    auto *const path = new QLineEdit(QStringLiteral("/data/archive/expeditions/2024/april/sentinel-2/scene-0417.tif"));
    auto *const width = new ZelSliderCtrl;
    auto *const shown = new ColorStatic;
    shown->SetBorder(Rgb(128, 128, 128));
    width->SetRange(0, 500);
    width->SetUnit(" px");
    width->SetValueField(ZelSliderCtrl::ValueField::Text);
    width->setMinimumWidth(GUITools::DlgUnitsToPixels(*width, {.cx = 180, .cy = 0}).cx);
    path->setMinimumWidth(width->minimumWidth());
    auto const shorten = [=] {
        int const pixels = static_cast<int>(width->GetPos());
        DString const text = GUITools::ShortenPath(platform::ToDString(path->text()), shown->font(), pixels);
        shown->SetWindowText(text);
        page->Say(Format(Translated("%d of %d pixels"), GUITools::TextWidth(shown->font(), text), pixels));
    };
    QObject::connect(width, &ZelSliderCtrl::PosChanged, page, shorten);
    QObject::connect(path, &QLineEdit::textChanged, page, shorten);
    page->Add("Path", path);
    page->Add("Width", width);
    page->Add("Shortened", shown);
    width->SetPos(220);
    page->AddButton("Center this window", [page] { GUITools::CenterWindow(*page->window()); });
    page->AddButton("Work for a while", [page] {
        GUITools::WaitCursor const busy;
        double sum = 0;
        for (int i = 1; i < 50'000'000; ++i)
            sum += 1.0 / i;
        page->Say(Format(Translated("Sum of 1/n: %.3f"), sum));
    });
    return page;
}

} // namespace

std::vector<Page> ControlPages() {
    return {
        {"buttons", Mark("Buttons"), "CZelButton CZelCustomButton CDownBmpButton", MakeButtonsPage},
        {"combos", Mark("Combo boxes"), "CZelComboBox CZelImgComboBox CZelColorComboBox", MakeCombosPage},
        {"fields", Mark("Fields"), "CFloatEdit ZelSliderCtrl ColorStatic HyperLink", MakeFieldsPage},
        {"groups", Mark("Groups"), "CGrpCtrl", MakeGroupsPage},
        {"tabs", Mark("Tabs"), "CZelTabCtrl IconTabCtrl", MakeTabsPage},
        {"gui-tools", Mark("Tools for windows"), "GUITools", MakeToolsPage},
    };
}

} // namespace zelvar::gallery
