#include "zelvar/base/Translation.h"
#include "zelvar/data/tables/ADIFile.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/gallery/PageForm.h"
#include "zelvar/lists/CADIListCtrl.h"
#include "zelvar/lists/CListCtrlEx.h"
#include "zelvar/lists/CTreeCtrlItr.h"
#include "zelvar/lists/CZelTreeCtrlEx.h"

#include <QtCore/QTemporaryDir>

#include <array>
#include <cmath>

namespace zelvar::gallery {

namespace {

enum Icons : int { kImageIcon = 7021, kTableIcon = 7022, kFolderIcon = 7023 };

void RegisterIcons() {
    CZelImageList::RegisterIcon(kImageIcon, "image-x-generic", "image");
    CZelImageList::RegisterIcon(kTableIcon, "x-office-spreadsheet", "table");
    CZelImageList::RegisterIcon(kFolderIcon, "folder", "folder");
}

// --- a table of a file ---

constexpr int kMeasured = 5000; // rows

/// Measurements of nuclei, as a segmentation leaves them behind.
void WriteMeasurements(DString const &path) {
    ADIFile table(DFile(path), "CSV", tdFormatAccess_Write, nullptr, nullptr);
    for (auto const &[name, type] : {std::pair{"Nucleus", ADICol_Int},
                                     {"Area [\xC2\xB5m\xC2\xB2]", ADICol_Double},
                                     {"Roundness", ADICol_Double},
                                     {"Class", ADICol_String},
                                     {"Remark", ADICol_String}})
        table.AddCol(name, type);
    constexpr std::array classes{"lymphocyte", "tumour", "stroma", "other"};
    for (int i = 0; i < kMeasured; ++i) {
        double const phase = std::sin(i * 0.7) + std::cos(i * 0.013);
        table.AddRow();
        table.WriteInt(i + 1);
        table.WriteString(FormatDouble(42 + 12 * phase, 2).c_str());
        table.WriteString(FormatDouble(std::min(1.0, 0.8 + 0.1 * phase), 3).c_str());
        table.WriteString(classes[static_cast<std::size_t>(i * 7 % 11 % 4)]);
        table.WriteString(i % 97 == 0 ? "touches the border" : "");
    }
    std::ignore = table.Finish();
}

/// The list, and how far it has read.
class MeasurementList : public CADIListCtrl {
public:
    MeasurementList(IAttrData *table, PageForm const &page) : CADIListCtrl(table), m_page(page) {
        AddAllColumns();
        for (int col = 1; col < GetNumCol(); ++col)
            SetColWidth(col, DString("touches the border  "));
        constexpr int firstPage = 64; // rows
        SetNumRow(firstPage, 0);
        std::ignore = OnGetItemText(0, 0);
        Tell();
    }
    void Tell() {
        int const rows = GetCacheRows();
        m_page.Say(IsReadThrough() ? Format(Translated("%d row, the table is read through",
                                                       "%d rows, the table is read through", rows),
                                            rows)
                                   : Format(Translated("%d row read so far", "%d rows read so far", rows), rows));
    }

protected:
    void paintEvent(QPaintEvent *event) override {
        CADIListCtrl::paintEvent(event);
        QMetaObject::invokeMethod(
            this, [this] { Tell(); }, Qt::QueuedConnection);
    }

private:
    PageForm const &m_page;
};

class TablePage : public PageForm {
public:
    TablePage() {
        DString const path = m_folder.filePath(QStringLiteral("nuclei.csv")).toStdString();
        WriteMeasurements(path);
        auto *const list =
            new MeasurementList(new ADIFile(DFile(path), "CSV", tdFormatAccess_Read, nullptr, nullptr), *this);
        list->SetExtendedStyle(LVS_EX_HEADERDRAGDROP | LVS_EX_LABELTIP);
        AddWide("Measured nuclei", list, true);
        AddButton("&Read all rows", [list] {
            list->ReadAllRows();
            list->Tell();
        });
        AddButton("&Largest area first", [list] { list->Sort(2, true); });
        AddButton("&By class", [list] { list->Sort(4, true); });
        AddSwitch("&Enabled", true, [list](bool on) { list->setEnabled(on); });
    }

private:
    QTemporaryDir m_folder; ///< gone with the page
};

QWidget *MakeTablePage() { return new TablePage; }

// --- lists of the application's own rows ---

struct Sample {
    char const *name;
    char const *stain;
    double megabytes;
    int group;
};

constexpr std::array<Sample, 9> kSamples{{{"Liver 01", "H&E", 812.5, 0},
                                          {"Liver 02", "H&E", 790.25, 0},
                                          {"Liver 03", "Ki-67", 1204, 0},
                                          {"Kidney 11", "PAS", 377, 1},
                                          {"Kidney 12", "H&E", 96.5, 1},
                                          {"Kidney 13", "unstained", 51, 1},
                                          {"Heart, left chamber", "Masson's trichrome", 640.75, 2},
                                          {"Heart, right chamber", "Masson's trichrome", 655, 2},
                                          {"Heart, overview of all sections", "H&E", 4100.125, 2}}};

QWidget *MakeListPage() {
    RegisterIcons();
    auto *const page = new PageForm;
    auto *const list = new CZelListCtrl;
    list->CreateImages();
    list->ModifyStyle(0, LVS_SHOWSELALWAYS);
    list->AddCol(Translated("Sample"), ADICol_String, true, 220, LVCFMT_LEFT);
    list->AddCol(Translated("Stain"), ADICol_String, true, 150, LVCFMT_LEFT);
    list->AddCol(Translated("Size [MB]"), ADICol_Double, false, 90, LVCFMT_RIGHT);
    list->SetExtendedStyle(LVS_EX_HEADERDRAGDROP | LVS_EX_LABELTIP);
    char const *const organs[] = {"Liver", "Kidney", "Heart"};
    for (int organ = 0; organ < 3; ++organ)
        list->InsertGroup(organs[organ], organ);
    unsigned const styles[] = {0, RowStyleShaded, RowStyleAccent | RowStyleBold, RowStyleGrey};
    for (std::size_t i = 0; i < kSamples.size(); ++i) {
        Sample const &sample = kSamples[i];
        CZelListCtrl::RowInfo info;
        list->SetStyle(&info, styles[i % 4]);
        info.image = list->GetZelImageList().GetIcon(i % 3 == 1 ? kTableIcon : kImageIcon, nullptr);
        info.data = i;
        list->AddRow(Format("%s|%s", sample.name, sample.stain), &info);
        list->SetColText(2, sample.megabytes, 2);
        list->SetItemGroup(list->GetCrntRow(), sample.group);
    }
    list->ResizeColToFit();
    list->SetColWidth(2, DString("Size [MB] at most"));
    list->SetSlct(2, true);
    page->AddWide("Samples", list, true);
    page->Say("Double-click a sample or a stain to edit it");
    QObject::connect(list, &CZelListCtrl::ItemChanged, page, [page, list](int, unsigned, unsigned) {
        page->Say(Format(Translated("%d of %d samples are selected"), list->GetNumSlct(), list->GetNumRow()));
    });
    QObject::connect(list, &CZelListCtrl::EndLabelEdit, page, [page](LabelEditNotify const *notify) {
        if (notify->pszText != nullptr)
            page->Say(Format(Translated("Now it reads: %s"), notify->pszText->c_str()));
    });
    page->AddSwitch("&Groups", false, [list](bool on) { list->EnableGroupView(on); });
    page->AddSwitch("&One row only", false, [list](bool on) { list->SetMultiSlct(!on); });
    page->AddSwitch("&Enabled", true, [list](bool on) { list->setEnabled(on); });
    page->AddButton("&Fit columns", [list] { list->ResizeColToFitUseHeader(); });
    page->AddButton("&Add a sample", [list] {
        list->AddRow(Format(Translated("New sample %d|unstained|0.00"), list->GetNumRow()), nullptr);
        list->EnsureVisible(list->GetCrntRow());
    });
    return page;
}

/// A million rows that are nowhere but in a formula.
class FormulaList : public CZelListCtrlVirtual {
public:
    FormulaList() {
        AddCol(Translated("Time [s]"), ADICol_Double, false, 110, LVCFMT_RIGHT);
        AddCol(Translated("Signal [mV]"), ADICol_Double, false, 110, LVCFMT_RIGHT);
        AddCol(Translated("State"), ADICol_String, false, 110, LVCFMT_LEFT);
        SetNumRow(kRows, 0);
    }
    DString OnGetItemText(int row, int col) override {
        double const signal = 80 * std::sin(row * 0.002) + 5 * std::sin(row * 1.7);
        if (col == 2)
            return signal > 75 ? "peak" : signal < -75 ? "trough" : "";
        return col == 0 ? FormatDouble(row * 0.001, 3) : FormatDouble(signal, 2);
    }
    static constexpr int kRows = 1'000'000;
};

QWidget *MakeVirtualListPage() {
    auto *const page = new PageForm;
    auto *const list = new FormulaList;
    page->AddWide("Recorded signal", list, true);
    page->Say("1,000,000 rows");
    auto const tell = [page, list] {
        int const rows = list->GetNumSlct();
        page->Say(Format(Translated("%d row is selected", "%d rows are selected", rows), rows));
    };
    QObject::connect(list, &FormulaList::ItemChanged, page, tell);
    QObject::connect(list, &FormulaList::RangeChanged, page, tell);
    page->AddButton("To the &middle", [list] {
        list->EnsureVisible(FormulaList::kRows / 2);
        list->ClearSlct();
        list->SetSlct(FormulaList::kRows / 2, true);
    });
    page->AddButton("To the &end", [list] { list->EnsureVisible(FormulaList::kRows - 1); });
    page->AddButton("Select &all", [list] { list->SetItemState(-1, LVIS_SELECTED, LVIS_SELECTED); });
    page->AddSwitch("Ena&bled", true, [list](bool on) { list->setEnabled(on); });
    return page;
}

QWidget *MakeFlexListPage() {
    auto *const page = new PageForm;
    auto *const list = new CListCtrlFlex;
    list->InsertColumn(0, ADICol_String, Translated("Channel"), true, LVCFMT_LEFT, 200, 0);
    list->InsertColumn(1, ADICol_Int, Translated("Wavelength [nm]"), true, LVCFMT_CENTER, 130, 1);
    list->InsertColumn(2, ADICol_String, Translated("Note"), false, LVCFMT_LEFT, 220, 2);
    struct Channel {
        char const *name;
        int wavelength;
        ColorRef back;
        int indent;
        char const *note;
    };
    constexpr ColorRef white = 0xFFFFFF;
    int row = 0;
    for (Channel const &channel : {Channel{"DAPI", 461, Rgb(214, 226, 250), 0, "nuclei"},
                                   {"bleed-through", 461, white, 16, "of DAPI into the next channel"},
                                   {"GFP", 509, Rgb(214, 243, 218), 0, "membranes"},
                                   {"mCherry", 610, Rgb(250, 219, 214), 0, ""},
                                   {"Cy5", 670, Rgb(243, 221, 240), 0, "read only in this column"}}) {
        list->InsertItem(row, channel.name, 0, nullptr, Rgb(0, 0, 0), channel.back, channel.indent);
        list->SetItemText(row, 1, std::to_string(channel.wavelength));
        list->SetItemText(row, 2, channel.note);
        ++row;
    }
    for (int col = 0; col < 3; ++col)
        list->SetColumnWidth(col, LVSCW_AUTOSIZE_USEHEADER);
    page->AddWide("Channels", list, true);
    page->Say("Headings sort; a double-click edits a name or a wavelength");
    QObject::connect(list, &CListCtrlFlex::EndLabelEdit, page, [page, list](LabelEditNotify const *notify) {
        if (notify->pszText != nullptr)
            page->Say(Format(Translated("Row %d: %s"), notify->iItem,
                             list->GetItemText(notify->iItem, notify->iSubItem).c_str()));
    });
    page->AddButton("&Edit the first cell", [list] { list->OnEdit(0, 0, false); });
    page->AddSwitch("&Sorting", true, [list](bool on) { list->EnblSort(on); });
    page->AddSwitch("&Tinted", false, [list](bool on) { list->SetBkColor(on ? Rgb(250, 246, 232) : 0); });
    page->AddSwitch("Ena&bled", true, [list](bool on) { list->setEnabled(on); });
    return page;
}

QWidget *MakePlainListPage() {
    auto *const page = new PageForm;
    auto *const list = new CListCtrlEx;
    int col = 0;
    for (char const *caption : {Mark("Step"), Mark("Started at"), Mark("Took [s]")}) {
        list->AddColumn(Translated(caption), col, -1, LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM,
                        col == 2 ? LVCFMT_RIGHT : LVCFMT_LEFT);
        ++col;
    }
    char const *const steps[][3] = {{"Load the image", "09:41:07", "2.4"},
                                    {"Correct the background", "09:41:10", "8.1"},
                                    {"Segment", "09:41:18", "31.7"},
                                    {"Measure", "09:41:50", "4.0"},
                                    {"Write the report", "09:41:54", "0.6"}};
    for (int row = 0; row < static_cast<int>(std::size(steps)); ++row)
        for (int cell = 0; cell < 3; ++cell)
            list->AddItem(row, cell, steps[row][cell]);
    list->SetColumnWidth(0, LVSCW_AUTOSIZE);
    list->SetColumnWidth(1, LVSCW_AUTOSIZE_USEHEADER);
    page->AddWide("Steps of a run", list, true);
    page->Say("Columns came as wide as their captions");
    QObject::connect(list, &CListCtrlEx::Click, page, [page, list](int row, int) {
        page->Say(row < 0 ? Translated("Beside the steps")
                          : Format(Translated("Step: %s"), list->GetItemText(row, 0).c_str()));
    });
    page->AddButton("&Add a step", [list] {
        int const row = list->AddItem(list->GetItemCount(), 0, "Wait");
        list->AddItem(row, 1, "later");
        list->EnsureVisible(row);
    });
    page->AddSwitch("&Headings", true,
                    [list](bool on) { list->ModifyStyle(LVS_NOCOLUMNHEADER, on ? 0U : LVS_NOCOLUMNHEADER); });
    page->AddSwitch("&Enabled", true, [list](bool on) { list->setEnabled(on); });
    return page;
}

// --- trees ---

void OpenAll(TreeView &tree) {
    CTreeCtrlItr itr(&tree, nullptr);
    for (itr.Frst(); itr.Cont(); itr.Next())
        std::ignore = tree.Expand(itr.Crnt(), TVE_EXPAND);
}

/// A tree whose classes are dragged into one another and renamed.
class ClassTree : public CZelTreeCtrl {
public:
    explicit ClassTree(PageForm const &page) : m_page(page) {
        RegisterIcons();
        EnableLeftDrag(true);
        EnableRghtDrag(true);
        EnableRghtSlct(true);
        EnableEdit(true);
        InitImages();
        auto *const nuclei = AddItem("Nuclei", 1, TVI_ROOT, TVI_LAST);
        auto *const tissue = AddItem("Tissue", 2, TVI_ROOT, TVI_LAST);
        auto *const files = AddItem("Trained on", 3, TVI_ROOT, TVI_LAST);
        DrawRect(nuclei, Rgb(235, 235, 250), Rgb(70, 70, 160));
        DrawRect(tissue, Rgb(250, 235, 235), Rgb(160, 70, 70));
        std::ignore = DrawIcon(files, kFolderIcon, nullptr);
        AddClass("Lymphocyte", Rgb(60, 90, 220), nuclei);
        AddClass("Tumour", Rgb(210, 60, 60), nuclei);
        AddClass("Stroma", Rgb(70, 170, 90), tissue);
        AddClass("Necrosis", Rgb(40, 40, 40), tissue);
        for (char const *file : {"liver 01.tif", "liver 02.tif"})
            std::ignore = DrawIcon(AddItem(file, 0, files, TVI_LAST), kImageIcon, nullptr);
        OpenAll(*this);
        SelectItem(nuclei);
    }

protected:
    bool IsDragTrgt(HTREEITEM item, HTREEITEM target) override {
        // Not into itself.
        for (HTREEITEM at = target; at != nullptr; at = GetParentItem(at))
            if (at == item)
                return false;
        return target != nullptr;
    }
    void OnDragEnd(HTREEITEM item, HTREEITEM target) override {
        m_page.Say(Format(Translated("%s goes into %s"), GetItemText(item).c_str(), GetItemText(target).c_str()));
        Copy(item, target);
        std::ignore = Expand(target, TVE_EXPAND);
        std::ignore = DeleteItem(item);
    }
    bool DTCSlctChg(HTREEITEM, HTREEITEM item, long long *result) override {
        *result = 0;
        if (item != nullptr)
            m_page.Say(Format(Translated("Selected: %s"), GetItemText(item).c_str()));
        return false;
    }
    void DTCEndLabelEdit(NMHDR *header, long long *result) override {
        auto const &info = *reinterpret_cast<NMTVDISPINFO *>(header); // which it is the head of
        *result = info.item.pszText != nullptr && *info.item.pszText != '\0' ? 1 : 0;
        if (*result != 0)
            m_page.Say(Format(Translated("Renamed to %s"), info.item.pszText));
    }

private:
    void AddClass(char const *name, ColorRef color, HTREEITEM parent) {
        DrawCircle(AddItem(name, 0, parent, TVI_LAST), color, Rgb(90, 90, 90), false);
    }
    void Copy(HTREEITEM item, HTREEITEM target) {
        auto *const copy = AddItem(GetItemText(item), GetItemData(item), target, TVI_LAST);
        int image = 0;
        int selected = 0;
        if (GetItemImage(item, image, selected))
            std::ignore = SetItemImage(copy, image, selected);
        for (HTREEITEM child = GetChildItem(item); child != nullptr; child = GetNextSiblingItem(child))
            Copy(child, copy);
    }

    PageForm const &m_page;
};

QWidget *MakeTreePage() {
    auto *const page = new PageForm;
    auto *const tree = new ClassTree(*page);
    page->AddWide("Classes", tree, true);
    page->AddButton("&Rename", [tree] {
        if (tree->GetSelectedItem() != nullptr)
            std::ignore = tree->EditLabel(tree->GetSelectedItem());
    });
    page->AddButton("&Expand all", [tree] { OpenAll(*tree); });
    page->AddButton("&Find \"Stroma\"", [tree] { tree->SlctItem("Stroma"); });
    page->AddSwitch("&Drags", true, [tree](bool on) {
        tree->EnableLeftDrag(on);
        tree->EnableRghtDrag(on);
    });
    page->AddSwitch("Ena&bled", true, [tree](bool on) { tree->setEnabled(on); });
    return page;
}

QWidget *MakeCursorTreePage() {
    auto *const page = new PageForm;
    auto *const tree = new CZelTreeCtrlEx;
    CTreeCursor const plate = tree->InsertItem("Plate 7");
    for (char const *row : {"A", "B", "C"}) {
        CTreeCursor const wells = plate.AddTail(DString("Row ") + row);
        for (int well = 1; well <= 4; ++well)
            wells.AddTail(Format("%s%d", row, well));
        wells.AddHead("control");
    }
    plate.Expand();
    plate.GetChild().Expand();
    plate.GetChild().GetChild().Select();
    page->AddWide("Wells of a plate", tree, true);
    page->Say("Rows and wells, made by cursors");
    page->AddButton("&Walk", [page, tree] {
        int items = 0;
        DString last;
        CTreeCtrlItr itr(tree, nullptr);
        for (itr.Frst(); itr.Cont(); itr.Next(), ++items)
            last = tree->GetItemText(itr.Crnt());
        page->Say(Format(Translated("%d items, the last one is %s"), items, last.c_str()));
    });
    page->AddButton("&Next", [page, tree] {
        CTreeCursor const next = tree->GetSelectedItem().GetNextVisible();
        page->Say(next.Select() ? Format(Translated("Selected: %s"), next.GetText().c_str())
                                : Translated("There is none behind it"));
    });
    page->AddButton("Add &behind", [tree] {
        CTreeCursor const at = tree->GetSelectedItem();
        at.GetParent().InsertAfter("new well", at).EnsureVisible();
    });
    page->AddButton("&Sort", [tree] { tree->GetSelectedItem().GetParent().SortChildren(); });
    page->AddButton("&Delete", [tree] { tree->GetSelectedItem().Delete(); });
    page->AddSwitch("&Enabled", true, [tree](bool on) { tree->setEnabled(on); });
    return page;
}

} // namespace

std::vector<Page> ListPages() {
    return {
        {"table", Mark("Table of a file"), "CADIListCtrl", MakeTablePage},
        {"list", Mark("List"), "CZelListCtrl", MakeListPage},
        {"virtual-list", Mark("Virtual list"), "CZelListCtrlVirtual", MakeVirtualListPage},
        {"flex-list", Mark("Flexible list"), "CListCtrlFlex CEditCell", MakeFlexListPage},
        {"plain-list", Mark("Plain list"), "CListCtrlEx", MakePlainListPage},
        {"tree", Mark("Tree"), "CZelTreeCtrl", MakeTreePage},
        {"cursor-tree", Mark("Tree by cursors"), "CZelTreeCtrlEx CTreeCursor CTreeCtrlItr", MakeCursorTreePage},
    };
}

} // namespace zelvar::gallery
