#include "zelvar/bars/CZelDockBar.h"
#include "zelvar/bars/CZelToolBar.h"
#include "zelvar/bars/CZelToolbarComboBoxButton.h"
#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/gallery/PageForm.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/props/CZelPropList.h"
#include "zelvar/xml/XMLNode.h"

#include <QtGui/QPainter>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QMainWindow>

#include <algorithm>

namespace zelvar::gallery {

namespace {

CZelProp *Group(char const *name, std::initializer_list<CZelProp *> props) {
    auto *const group = new CZelProp(name);
    for (CZelProp *const prop : props)
        group->AddSubItem(prop);
    return group;
}

/// What an application lets its users set of a layer of an image.
void FillLayer(CZelPropList &list) {
    auto *const disabled = new CZelProp(Translated("Pyramid levels"), PropRule::Integer(0, 12), "5",
                                        Translated("Made by the program once the file is read"));
    disabled->Enable(false);
    list.AddProperty(Group(Translated("Image"),
                           {
                               new CZelProp(Translated("Title"), PropRule{}, "Nuclei, DAPI",
                                            Translated("The name of the layer in the legend")),
                               new CZelProp(Translated("Size"), "2048 × 2048 × 3",
                                            Translated("Columns, rows and channels; as the file has them")),
                               new CZelProp(Translated("Source"), PropRule::File(), "/data/slides/2026-03/nuclei.tif",
                                            Translated("The file that the layer is read from")),
                               new CZelProp(Translated("Cache folder"), PropRule::Folder(), "/var/tmp",
                                            Translated("Where reduced images are kept")),
                               disabled,
                           }));
    list.AddProperty(
        Group(Translated("Look"),
              {
                  new CZelProp(Translated("Visible"), PropRule::Boolean(), "true",
                               Translated("Whether the layer is drawn at all")),
                  new CZelProp(Translated("Opacity"), PropRule::Integer(0, 100), "80",
                               Translated("Per cent: 0 is invisible, 100 hides what is below")),
                  new CZelProp(Translated("Gamma"), PropRule::Real(0.1, 5, 2), "1.00",
                               Translated("Middle tones: above 1 they become brighter")),
                  new CZelProp(Translated("Tint"), PropRule::Color(), "#3C78D8",
                               Translated("The colour of the brightest value")),
                  new CZelProp(Translated("Resampling"), PropRule::Choice({"Nearest", "Bilinear", "Cubic", "Lanczos"}),
                               "Cubic", Translated("How values between two pixels are found")),
              }));
    list.AddProperty(Group(
        Translated("Notes"),
        {new CZelProp(Translated("Comment"), PropRule::MultiLine(), "Stained on Monday.\nSecond slide is out of focus.",
                      Translated("Anything worth knowing, on as many lines as it takes"))}));
}

QWidget *MakePropListPage() {
    auto *const page = new PageForm;
    auto *const list = new CZelPropList;
    list->EnableHeaderCtrl(true);
    list->SetVSDotNetLook(true);
    list->EnableDescriptionArea(true);
    list->EnableSearchBox(true);
    FillLayer(*list);
    list->SetCurSel(list->GetProperty(1)->GetSubItem(1));
    list->EnterValue(*list->GetCurSel(), "65"); // one that has been changed
    list->SetBrowse([page](CZelProp &prop, DString &value) {
        page->Say(Format(Translated("An application would show its file dialog here, for %s"), prop.GetName().c_str()));
        value += prop.GetRule().kind == PropRule::Kind::Folder ? "/new" : ".new";
        return true;
    });
    page->AddWide("Properties of an image layer", list, true);
    page->AddSwitch("Alphabetic", false, [list](bool on) { list->SetAlphabeticMode(on); });
    page->AddSwitch("Enabled", true, [list](bool on) { list->setEnabled(on); });
    page->AddButton("Reset all", [page, list] {
        list->ResetOriginalValues();
        page->Say("All values are the original ones");
    });
    QObject::connect(list, &CZelPropList::PropertyChanged, page, [page](CZelProp const *prop) {
        DString const name = prop->GetName();
        DString const value = prop->GetRule().Show(prop->GetValue());
        DString const original = prop->GetRule().Show(prop->GetOriginalValue());
        page->Say(prop->IsModified()
                      ? Format(Translated("%s is %s, it was %s"), name.c_str(), value.c_str(), original.c_str())
                      : Format(Translated("%s is %s again"), name.c_str(), value.c_str()));
    });
    page->Say("F2 or Enter begins to edit, Escape gives up, Tab goes on");
    return page;
}

enum Commands : int { kOpen = 7101, kSave, kPan, kZoom, kMeasure, kGrid, kScale, kPrint };
enum Icons : unsigned { kOpenIcon = 7101, kSaveIcon, kPanIcon, kZoomIcon, kMeasureIcon, kGridIcon, kPrintIcon };

void RegisterIcons() {
    CZelImageList::RegisterIcon(kOpenIcon, "zelvar-open", "folder");
    CZelImageList::RegisterIcon(kSaveIcon, "zelvar-save", "drive");
    CZelImageList::RegisterIcon(kPanIcon, "zelvar-pan", "home");
    CZelImageList::RegisterIcon(kZoomIcon, "zelvar-zoom", "image");
    CZelImageList::RegisterIcon(kMeasureIcon, "zelvar-measure", "vector");
    CZelImageList::RegisterIcon(kGridIcon, "zelvar-grid", "table");
    CZelImageList::RegisterIcon(kPrintIcon, "zelvar-print", "file");
}

/// Stands for the view of an image: a gradient with the scale written over it.
class View : public QWidget {
public:
    View() {
        setFocusPolicy(Qt::StrongFocus);
        setAccessibleName(platform::Shown("Image"));
    }
    void SetGrid(bool on) {
        m_grid = on;
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        QRadialGradient spot(rect().center(), width() / 2.0 + 1);
        spot.setColorAt(0, QColor(90, 150, 240));
        spot.setColorAt(1, QColor(8, 12, 30));
        painter.fillRect(rect(), spot);
        painter.setPen(QColor(255, 255, 255, 70));
        constexpr int kStep = 32;
        for (int x = kStep; m_grid && x < width(); x += kStep)
            painter.drawLine(x, 0, x, height());
        for (int y = kStep; m_grid && y < height(); y += kStep)
            painter.drawLine(0, y, width(), y);
        if (hasFocus()) {
            painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
            painter.drawRect(rect().adjusted(1, 1, -1, -1));
        }
    }
    void focusInEvent(QFocusEvent *) override { update(); }
    void focusOutEvent(QFocusEvent *) override { update(); }

private:
    bool m_grid = false;
};

CZelDockBar *AddBar(QMainWindow &window, Qt::DockWidgetArea side, char const *title, int id,
                    std::initializer_list<char const *> lines) {
    auto *const bar = new CZelDockBar(title, id);
    auto *const list = new QListWidget;
    list->setAccessibleName(QString::fromUtf8(title));
    list->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents); // most of the room is the image's
    for (char const *const line : lines)
        list->addItem(QString::fromUtf8(line));
    bar->setWidget(list);
    bar->Dock(window, side);
    return bar;
}

CZelToolBar *AddTools(QMainWindow &window, CZelImageList const &images) {
    auto *const bar = new CZelToolBar(Translated("Tools"), 7201);
    bar->SetImages(&images);
    bar->InsertButton(kOpen, 0, Translated("&Open…"), Translated("Open an image"));
    bar->InsertButton(kSave, 1, Translated("&Save"), Translated("Save the image"));
    bar->EnableButton(kSave, false);
    bar->SetButtonShortcut(kOpen, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    bar->AddSeparator();
    bar->InsertButton(kPan, 2, Translated("&Pan"));
    bar->InsertButton(kZoom, 3, Translated("&Zoom"));
    bar->InsertButton(kMeasure, 4, Translated("&Measure"));
    for (int const id : {kPan, kZoom, kMeasure})
        bar->SetButtonStyle(id, CZelToolBar::TBBS_CHECKGROUP);
    bar->PressButton(kPan);
    window.addToolBar(bar);
    return bar;
}

CZelToolBar *AddViewBar(QMainWindow &window, CZelImageList const &images) {
    auto *const bar = new CZelToolBar(Translated("View"), 7202);
    bar->SetImages(&images);
    bar->InsertButton(kGrid, 5, Translated("&Grid"), Translated("Lines over the image"));
    bar->SetButtonStyle(kGrid, CZelToolBar::TBBS_CHECKBOX);
    auto *const scale = new CZelToolbarComboBoxButton(kScale, Translated("Scale"), 7);
    for (char const *const text : {"25 %", "50 %", "100 %", "200 %"})
        scale->AddItem(text);
    scale->SelectItem("100 %");
    bar->AddComboBox(scale);
    bar->InsertButton(kPrint, 6, Translated("P&rint"));
    window.addToolBar(bar);
    return bar;
}

/// What the page's buttons act on; a child of the page.
class Bars : public QMainWindow {
public:
    explicit Bars(PageForm &page) : m_page(page) {
        RegisterIcons();
        m_images.Create();
        for (unsigned const icon : {kOpenIcon, kSaveIcon, kPanIcon, kZoomIcon, kMeasureIcon, kGridIcon, kPrintIcon})
            m_images.GetIcon(icon, nullptr);
        setWindowFlags(Qt::Widget); // a part of the page
        auto *const view = new View;
        setCentralWidget(view);
        m_tools = AddTools(*this, m_images);
        m_view = AddViewBar(*this, m_images);
        AddBar(*this, Qt::LeftDockWidgetArea, Translated("Layers"), 7301, {"Nuclei", "Membranes", "Background"});
        auto *const channels = AddBar(*this, Qt::RightDockWidgetArea, Translated("Channels"), 7302,
                                      {"DAPI 461 nm", "GFP 509 nm", "Cy5 670 nm"});
        AddBar(*this, Qt::RightDockWidgetArea, Translated("History"), 7303, {"Opened", "Segmented", "Measured"})
            ->AttachToTabWnd(*channels);
        channels->raise();
        for (CZelToolBar *const bar : {m_tools, m_view})
            connect(bar, &CZelToolBar::Command, this, [this, bar, view](int id) {
                if (id == kGrid)
                    view->SetGrid(bar->IsButtonPressed(kGrid));
                DString const name = platform::ToDString(bar->GetButton(id)->iconText());
                m_page.Say(id == kScale ? Format(Translated("Scale is %s"),
                                                 CZelToolbarComboBoxButton::GetByCmd(kScale)->GetText().c_str())
                                        : Format(Translated("Command %d, %s"), id, name.c_str()));
            });
    }
    void Save() {
        m_saved = CZelDockBar::SaveState(*this)->SaveText();
        m_page.Say(Format(Translated("%zu bytes: %s"), m_saved.size(), Split(m_saved, '\n').at(2).c_str()));
    }
    void Restore() {
        XMLNode root;
        bool const done = root.LoadText(m_saved) && CZelDockBar::LoadState(*this, root);
        m_page.Say(done ? Mark("The saved layout is back") : Mark("No layout has been saved"));
    }
    void ShowBars(bool show) {
        for (CZelDockBar *const bar : CZelDockBar::BarsOf(*this))
            bar->ShowControlBar(show);
    }
    void EnableLarge(bool large) {
        m_tools->EnableLargeIcons(large);
        m_view->EnableLargeIcons(large);
    }
    void ShowTexts(bool show) {
        m_tools->SetTextPlace(show ? CZelToolBar::TextPlace::Below : CZelToolBar::TextPlace::None);
        m_view->SetTextPlace(show ? CZelToolBar::TextPlace::Beside : CZelToolBar::TextPlace::None);
    }

private:
    PageForm &m_page;
    CZelImageList m_images;
    CZelToolBar *m_tools; ///< a child
    CZelToolBar *m_view;  ///< a child
    DString m_saved;
};

QWidget *MakeBarsPage() {
    auto *const page = new PageForm;
    auto *const bars = new Bars(*page);
    page->AddWide("Bars around an image", bars, true);
    page->AddButton("Save layout", [bars] { bars->Save(); });
    page->AddButton("Restore layout", [bars] { bars->Restore(); });
    page->AddSwitch("Bars", true, [bars](bool on) { bars->ShowBars(on); });
    page->AddSwitch("Large", false, [bars](bool on) { bars->EnableLarge(on); });
    page->AddSwitch("Texts", false, [bars](bool on) { bars->ShowTexts(on); });
    page->Say("F6 walks the bars, arrows walk in a tool bar; captions and tool bars can be dragged");
    return page;
}

/// Pictures of an image list in rows, each with what stands below it.
class PictureSheet : public QWidget {
public:
    PictureSheet() {
        RegisterIcons();
        m_images.Create();
        for (unsigned const number : CZelImageList::RegisteredIcons())
            Put(m_images.GetIcon(number, nullptr), std::to_string(number));
        ColorRef const black = Rgb(0, 0, 0);
        for (ColorRef const color : {Rgb(220, 40, 30), Rgb(240, 200, 40), Rgb(40, 160, 70), Rgb(40, 90, 220)}) {
            Put(m_images.GetCircleSmall(color, black), Translated("small"));
            Put(m_images.GetCircle(color, black, false), Translated("circle"));
            Put(m_images.GetCircle(color, black, true), Translated("dotted"));
            Put(m_images.GetRect(color, black), Translated("rect"));
        }
    }
    [[nodiscard]] int Count() const { return static_cast<int>(m_cells.size()); }
    void SetSide(int side) {
        m_images.SetPictureSide(side);
        update();
    }
    void Enable(bool enabled) {
        m_enabled = enabled;
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        int const side = m_images.GetPictureSide();
        int const line = fontMetrics().height();
        int const cellWidth = std::max(side, fontMetrics().horizontalAdvance(QStringLiteral("000000"))) + line;
        int const cellHeight = side + line + line / 2;
        int const columns = std::max(1, width() / cellWidth);
        painter.setPen(palette().color(m_enabled ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
        for (int i = 0; i < Count(); ++i) {
            Cell const &cell = m_cells[static_cast<std::size_t>(i)];
            QRect const box(i % columns * cellWidth, i / columns * cellHeight, cellWidth, cellHeight);
            m_images.Draw(painter, {box.left() + (cellWidth - side) / 2, box.top() + 2}, cell.index, m_enabled);
            painter.drawText(box.adjusted(0, side + 2, 0, 0), Qt::AlignHCenter | Qt::AlignTop,
                             platform::ToQString(cell.text));
        }
    }

private:
    struct Cell {
        int index = 0;
        DString text{};
    };
    void Put(int index, DString text) { m_cells.push_back({index, std::move(text)}); }

    CZelImageList m_images;
    std::vector<Cell> m_cells;
    bool m_enabled = true;
};

QWidget *MakeImageListPage() {
    auto *const page = new PageForm;
    auto *const sheet = new PictureSheet;
    auto *const side = new CZelComboBox;
    for (char const *const text : {"16", "24", "32", "48"})
        side->AddString(text);
    side->setMinimumContentsLength(4);
    side->SetCurSel(0);
    QObject::connect(side, &QComboBox::currentIndexChanged, page, [page, sheet, side] {
        sheet->SetSide(side->currentText().toInt());
        page->Say(Format(Translated("Drawn %s pixels wide; the indexes are the same"), side->GetWindowText().c_str()));
    });
    page->Add("&Side of the pictures", side);
    page->AddWide("Pictures of the list", sheet, true);
    page->AddSwitch("Enabled", true, [sheet](bool on) { sheet->Enable(on); });
    page->Say(Format(Translated("%d pictures: registered icons by their numbers, and shapes"), sheet->Count()));
    return page;
}

} // namespace

std::vector<Page> BarPages() {
    return {
        {"prop-list", Mark("Property list"), "CZelPropList CZelProp", MakePropListPage},
        {"bars", Mark("Bars"), "CZelDockBar CZelToolBar CZelToolbarComboBoxButton", MakeBarsPage},
        {"image-list", Mark("Image list"), "CZelImageList", MakeImageListPage},
    };
}

} // namespace zelvar::gallery
