// The dialogs: message boxes, filter and find, the selector of nodes, and those that pick files.
#include "zelvar/base/Translation.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/dialogs/CBDISelectorDlg.h"
#include "zelvar/dialogs/DlgFltrFind.h"
#include "zelvar/dialogs/DlgMsgDetails.h"
#include "zelvar/dialogs/XMessageBox.h"
#include "zelvar/dialogs/core/MessageBoxSet.h"
#include "zelvar/filedlg/CDlgSlctDir.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/gallery/PageForm.h"
#include "zelvar/gallery/SampleContainer.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/platform/ui/MainWindow.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QPointer>
#include <QtCore/QTemporaryDir>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

namespace zelvar::gallery {

namespace {

QComboBox *MakeCombo(std::initializer_list<char const *> entries) {
    auto *const combo = new QComboBox;
    for (char const *entry : entries)
        combo->addItem(platform::Shown(entry));
    return combo;
}

/// What was picked, the first few by name.
DString Listed(std::vector<DString> const &picked) {
    if (picked.empty())
        return Translated("Nothing was picked");
    constexpr std::size_t most = 2;
    DString names = picked.front();
    for (std::size_t i = 1; i < std::min(most, picked.size()); ++i)
        names += ", " + picked[i];
    return Format(Translated("%zu picked: %s"), picked.size(),
                  (picked.size() > most ? names + ", ..." : names).c_str());
}

// ------------------------------------------------------------------------------------------------ message boxes

DString Lines(int count) {
    DString text = Translated("These files cannot be read:");
    for (int i = 1; i <= count; ++i)
        text += Format("\nplate 7/well %03d.tif", i);
    return text;
}

class MessageBoxPage : public PageForm {
public:
    MessageBoxPage() {
        m_set = MakeCombo({Mark("OK"), Mark("OK, Cancel"), Mark("Abort, Retry, Ignore"), Mark("Yes, No, Cancel"),
                           Mark("Yes, No"), Mark("Retry, Cancel"), Mark("What to do with a file that exists"),
                           Mark("One that is not there"), Mark("Continue, Abort")});
        m_icon = MakeCombo({Mark("none"), Mark("stop"), Mark("question"), Mark("exclamation"), Mark("information")});
        m_text = MakeCombo({Mark("short"), Mark("a long line"), Mark("with markup"), Mark("500 lines")});
        m_default->setRange(1, 4);
        m_set->setCurrentIndex(MB_YESNOCANCEL);
        m_icon->setCurrentIndex(2);
        Add("&Buttons", m_set);
        Add("&Icon", m_icon);
        Add("&Text", m_text);
        Add("&Default button", m_default);
        AddSwitch("Check box", true, [this](bool on) { Set(MB_DONTASKAGAIN, on); });
        AddSwitch("Help", false, [this](bool on) { Set(MB_HELP, on); });
        AddSwitch("On top of all", false, [this](bool on) { Set(MB_SYSTEMMODAL, on); });
        AddButton("Show...", [this] { Show(); });
        Say("Nothing was asked yet");
    }

private:
    void Set(unsigned bit, bool on) { m_bits = on ? m_bits | bit : m_bits & ~bit; }
    [[nodiscard]] DString Text() const {
        switch (m_text->currentIndex()) {
        case 1: {
            DString text = Translated("The image has been changed");
            for (int i = 0; i < 30; ++i)
                text += Translated(", and it would be a pity to lose that");
            return text + ".";
        }
        case 2:
            return Translated("<b>Markup</b> is shown as it is written.");
        case 3:
            return Lines(500);
        default:
            return Translated("Save the changes to \"scan 14.tif\"?");
        }
    }
    void Show() {
        unsigned const icon = static_cast<unsigned>(m_icon->currentIndex()) << 4U;
        unsigned const preset = static_cast<unsigned>(m_default->value() - 1) << 8U;
        unsigned const type = static_cast<unsigned>(m_set->currentIndex()) | icon | preset | m_bits;
        QPointer<MessageBoxPage> const alive(this);
        int const answer = XMessageBox(window(), Text().c_str(), Translated("Viewer"), type);
        if (alive.isNull())
            return; // it went with its window
        int const id = answer & ~static_cast<int>(MB_DONTASKAGAIN);
        DString name;
        for (MessageBoxButton const &button : SetOfMessageBox(type).buttons)
            name = button.id == id ? Translated(button.text) : name;
        std::erase(name, '&');
        Say(Format(answer == id ? Translated("Answer %d: %s") : Translated("Answer %d: %s, and not to ask again"), id,
                   name.c_str()));
    }

    QComboBox *m_set;
    QComboBox *m_icon;
    QComboBox *m_text;
    QSpinBox *m_default = new QSpinBox;
    unsigned m_bits = MB_DONTASKAGAIN;
};

QWidget *MakeMessageBoxPage() { return new MessageBoxPage; }

QWidget *MakeDetailsPage() {
    auto *const page = new PageForm;
    auto *const message = new QLineEdit(platform::Shown("3 of 500 files were not read."));
    message->setMinimumWidth(message->fontMetrics().horizontalAdvance(message->text()) * 3 / 2);
    page->Add("&Message", message);
    page->AddButton("Show...", [page, message] {
        DlgMsgDetails dialog(Translated("Import"), platform::ToDString(message->text()).c_str(), Lines(3).c_str(),
                             page->window());
        page->SayAnswer(
            [&] { return dialog.DoModal() == 1 ? Translated("OK was pressed") : Translated("It was closed"); });
    });
    return page;
}

// ----------------------------------------------------------------------------------------------- filter and find

struct Feature {
    char const *category;
    char const *group;
    char const *name;
    char const *description;
};
constexpr Feature kFeatures[] = {
    {"Geometry", "Extent", "Area", "Number of pixels, times what a pixel covers."},
    {"Geometry", "Extent", "Length", "Of the smallest box around the object, turned as it lies."},
    {"Geometry", "Shape", "Compactness", "Area of the box by the area of the object."},
    {"Geometry", "Shape", "Roundness", "How little the object differs from an ellipse."},
    {"Texture", "Haralick", "Contrast", "How much neighbouring pixels differ."},
    {"Texture", "Haralick", "Entropy", "How evenly the pairs of values are spread."},
    {"", "Relations", "Number of neighbours", "Objects that share an edge with this one."},
};

void AddFeatures(DlgFltrFind &dialog) {
    std::uint64_t number = 0;
    for (char const *channel : {"Red", "Green", "Blue", "Near infrared", "DAPI", "FITC"})
        for (char const *measure : {"Mean", "Standard deviation", "Skewness", "Ratio"})
            dialog.AddItem(Format("%s %s", measure, channel), "Layer values", measure,
                           Format("%s of the values in channel \"%s\".", measure, channel), ++number);
    for (Feature const &feature : kFeatures)
        dialog.AddItem(feature.name, feature.category, feature.group, feature.description, ++number);
}

DString Picked(DlgFltrFind const &dialog) {
    DVector<DlgFltrFind::Item *> items;
    dialog.GetFinalSlct(&items);
    std::vector<DString> names;
    for (DlgFltrFind::Item const *const item : items)
        names.push_back(item->name);
    return Listed(names);
}

/// Categories to begin with; to be found in the dialog they stay what they are there.
constexpr char const *kStarts[] = {Mark("All"), Mark("Layer values"), Mark("Geometry"), Mark("Texture")};

QWidget *MakeFilterFindPage() {
    auto *const page = new PageForm;
    auto *const start = MakeCombo({kStarts[0], kStarts[1], kStarts[2], kStarts[3]});
    page->Add("&Begin with", start);
    page->AddButton("Pick features...", [page, start] {
        DlgFltrFind dialog(kStarts[start->currentIndex()], page->window());
        AddFeatures(dialog);
        page->SayAnswer(
            [&] { return dialog.DoModal() == QDialog::Accepted ? Picked(dialog) : Translated("Cancelled"); });
    });
    page->AddButton("Beside this window", [page, start] {
        auto *const dialog = new DlgFltrFind(kStarts[start->currentIndex()]);
        dialog->SetListBoxTitle(Translated("Features:"));
        AddFeatures(*dialog);
        dialog->CreateModeless(page);
        QObject::connect(dialog, &QDialog::finished, page, [page, dialog](int result) {
            page->Say(result == QDialog::Accepted ? Picked(*dialog) : Translated("Cancelled"));
            dialog->deleteLater();
        });
    });
    page->Say("Nothing was picked yet");
    return page;
}

// ---------------------------------------------------------------------------------------------- nodes and files

/// Asks for nodes in a container; what was picked.
DString PickNodes(QWidget *window, DString const &path, unsigned mask, bool multiple) {
    BDIDrvr *driver = nullptr;
    BDINode *root = nullptr;
    void *const repository = BDIDrvrMngr::Instance()->OpenFile(path.c_str(), &driver, &root, nullptr, nullptr);
    if (repository == nullptr)
        return Format(Translated("No driver opens '%s'"), path.c_str());
    driver->CloseNode(root);
    driver->CloseRepository(repository);
    CBDISelectorDlg dialog(driver, path.c_str(), mask, Translated("Pick images"), multiple, window);
    if (dialog.DoModal() != QDialog::Accepted)
        return Translated("Cancelled");
    std::vector<DString> names;
    for (DString const &node : dialog.m_results)
        names.push_back(BDIMoniker(node, driver).GetDisplayName());
    return Listed(names);
}

class NodeSelectorPage : public PageForm {
public:
    NodeSelectorPage() {
        Add("&Pick", m_kind);
        AddSwitch("Several", true, [this](bool on) { m_multiple = on; });
        AddButton("In a sample archive...", [this] { PickInSample(); });
        AddButton("In a file...", [this] {
            FileDlg request(Translated("Container"));
            if (request.OpenAll(0))
                Pick(request.GetPhysFile());
        });
        Say("Nothing was picked yet");
    }

private:
    void PickInSample() {
        DString const path = platform::ToDString(m_folder.filePath(QStringLiteral("plate.zip")));
        if (WriteSampleContainer(path))
            Pick(path);
        else
            Say("The archive cannot be written");
    }
    void Pick(DString const &path) {
        unsigned const masks[] = {BDINode_Raster, BDINode_Table, BDINode_Raster | BDINode_Thematic | BDINode_Table};
        SayAnswer([&] { return PickNodes(window(), path, masks[m_kind->currentIndex()], m_multiple); });
    }

    QTemporaryDir m_folder;
    QComboBox *m_kind = MakeCombo({Mark("images"), Mark("tables"), Mark("all kinds")});
    bool m_multiple = true;
};

QWidget *MakeNodeSelectorPage() { return new NodeSelectorPage; }

DString PickedFiles(bool opened, FileDlg const &request) {
    if (!opened)
        return Translated("Cancelled");
    std::vector<DString> texts;
    texts.reserve(static_cast<std::size_t>(request.GetNumSlctFiles()));
    for (int i = 0; i < request.GetNumSlctFiles(); ++i)
        texts.push_back(request.GetFile(i)->GetDisplayName());
    return Listed(texts);
}

/// The library's own dialog comes up over an application's frame window, the platform's one over others.
DString PickRaster(bool own) {
    std::unique_ptr<QMainWindow> const frame = own ? std::make_unique<QMainWindow>() : nullptr;
    platform::SetMainWindow(frame.get());
    FileDlg request("");
    request.SetDataType(BDINode_Raster);
    bool const opened = request.OpenRasterData(DIOPluginMngr::Instance(), 0, true, true, nullptr);
    return PickedFiles(opened, request);
}

DString SaveTable() {
    FileDlg request("");
    return PickedFiles(request.OpenTableData(1, Translated("Table")), request);
}

DString PickFolder(QWidget *window) {
    CDlgSlctDir dialog(window);
    dialog.SetTitle(Translated("Folder of results"));
    dialog.SetKey("GalleryFolder");
    return dialog.DoBrowse() != 0 ? dialog.GetPath() : Translated("Cancelled");
}

DString PickItems(QWidget *window) {
    DFileFrmt images("images", Mark("Images"), "*.tif;*.tiff;*.png;*.jpg");
    DFileFrmt all("all", Mark("All files"), "*.*");
    std::unique_ptr<DlgOpenDS, void (*)(DlgOpenDS *)> const dialog(
        DlgOpenDS::CreateDialogObject({&images, &all}, &images, DT_DATA, nullptr, window),
        &DlgOpenDS::DeleteDialogObject);
    dialog->SetTitle(Translated("Pick images"));
    dialog->SetBDIFilter(BDINode_Raster);
    if (dialog->DoModal() != QDialog::Accepted)
        return Translated("Cancelled");
    std::vector<DString> texts;
    for (BDIMoniker const &moniker : dialog->GetSelectedNodePaths())
        texts.push_back(moniker.GetDisplayName());
    return Listed(texts);
}

QWidget *MakeFileDialogsPage() {
    auto *const page = new PageForm;
    auto const add = [page](char const *label, char const *text, std::function<DString()> pick) {
        auto *const button = new QPushButton(platform::Shown(text));
        page->Add(label, button);
        QObject::connect(button, &QPushButton::clicked, page,
                         [page, pick = std::move(pick)] { page->SayAnswer(pick); });
    };
    add(Mark("Open image data"), Mark("Browse..."), [] { return PickRaster(true); });
    add(Mark("Open image data, the platform's way"), Mark("Browse..."), [] { return PickRaster(false); });
    add(Mark("Save a table"), Mark("Save as..."), SaveTable);
    add(Mark("Choose a folder"), Mark("Folder..."), [page] { return PickFolder(page->window()); });
    add(Mark("Pick items, without the service of file dialogs"), Mark("Pick..."),
        [page] { return PickItems(page->window()); });
    page->Say("Nothing was picked yet");
    return page;
}

} // namespace

std::vector<Page> MessagePages() {
    return {
        {"message-box", Mark("Message box"), "XMessageBox", MakeMessageBoxPage},
        {"message-details", Mark("Message with details"), "DlgMsgDetails", MakeDetailsPage},
        {"filter-find", Mark("Filter & Find"), "DlgFltrFind", MakeFilterFindPage},
        {"node-selector", Mark("Selector of nodes"), "CBDISelectorDlg", MakeNodeSelectorPage},
        {"file-dialogs", Mark("File dialogs"),
         "FileDlg CCustomFileDlg CDlgSlctDir DlgOpenDS DataSourceList DSDataSourceWnd DSListCtrl HierarchyList "
         "DSPropertyWnd ImagePreviewWnd ImageExtraWnd",
         MakeFileDialogsPage},
    };
}

} // namespace zelvar::gallery
