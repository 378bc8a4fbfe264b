#include "zelvar/filedlg/PlatformFileDialog.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/base/Translation.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/filedlg/FilePictures.h"
#include "zelvar/filedlg/FolderRoads.h"
#include "zelvar/filedlg/NameBytes.h"
#include "zelvar/filedlg/NameDelegate.h"
#include "zelvar/filedlg/PathQuestions.h"
#include "zelvar/filedlg/ToolkitSettings.h"
#include "zelvar/filedlg/UndecodedNames.h"
#include "zelvar/filedlg/core/TypedNames.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QLocale>
#include <QtGui/QAction>
#include <QtGui/QFileSystemModel>
#include <QtGui/QShortcut>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTreeView>

#include <algorithm>
#include <tuple>
#include <utility>

namespace zelvar {

namespace {

constexpr int kTypesWidth = 20; // characters; longer descriptions are cut, not the dialog widened

enum Columns { kSizeColumn = 1, kTypeColumn = 2, kDateColumn = 3 };

/// Brackets are no signs of a set in our masks.
QString ToolkitMask(DString const &mask) { return platform::ToQString(mask).replace(u'[', QStringLiteral("[[]")); }

} // namespace

DString PlatformFileDialog::StartFolder(DString wanted) {
    while (wanted.size() > 1 && wanted.ends_with('/'))
        wanted.pop_back();
    for (DString const &folder : {wanted, platform::ToDString(QDir::homePath())})
        if (folder.starts_with('/') && IsFolder(folder) && !HoldsDeadPlace(folder))
            return folder;
    return HoldsDeadPlace("/") ? "/proc/self/ns" : "/"; // a folder that is always there and holds nothing
}

std::unique_ptr<PlatformFileDialog> PlatformFileDialog::Make(Setup const &setup, QWidget *parent) {
    ToolkitSettings const apart;
    return std::unique_ptr<PlatformFileDialog>(new PlatformFileDialog(setup, parent));
}

void PlatformFileDialog::End(std::unique_ptr<PlatformFileDialog> dialog) {
    if (!dialog->m_isListing) {
        ToolkitSettings const apart;
        dialog.reset();
        return;
    }
    PlatformFileDialog *const left = dialog.release();
    left->hide();
    left->setParent(nullptr);
    auto const destroy = [left] {
        ToolkitSettings const apart;
        delete left;
    };
    connect(
        left->m_model, &QFileSystemModel::directoryLoaded, qApp,
        [destroy] { QMetaObject::invokeMethod(qApp, destroy, Qt::QueuedConnection); }, Qt::SingleShotConnection);
}

PlatformFileDialog::PlatformFileDialog(Setup const &setup, QWidget *parent)
    : PlatformFileDialog(setup, std::make_unique<FolderAlias const>(setup.folder), parent) {}

PlatformFileDialog::PlatformFileDialog(Setup const &setup, std::unique_ptr<FolderAlias const> folder, QWidget *parent)
    // The folder is given here: without one the toolkit begins at a place of its own choice.
    : QFileDialog(parent, platform::ToQString(setup.title), folder->Path()), m_setup(setup),
      m_folder(std::move(folder)), m_model(findChild<QFileSystemModel *>()),
      m_name(findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))),
      m_types(findChild<QComboBox *>(QStringLiteral("fileTypeCombo"))) {
    setOptions(DontUseNativeDialog | DontUseCustomDirectoryIcons | DontResolveSymlinks | DontConfirmOverwrite);
    setFileMode(AnyFile);
    setAcceptMode(m_setup.opens ? AcceptOpen : AcceptSave);
    if (!m_setup.title.empty())
        setWindowTitle(platform::ToQString(m_setup.title));
    m_ok = findChild<QDialogButtonBox *>()->button(m_setup.opens ? QDialogButtonBox::Open : QDialogButtonBox::Save);

    SetUpViews();
    SetUpUndecoded();
    m_roads = new FolderRoads(*this, *this);
    for (QAbstractItemView *const view : m_views)
        view->installEventFilter(m_roads);
    connect(m_roads, &FolderRoads::Taken, this, &PlatformFileDialog::UpdateButtons);
    TakeOverInput();
    SetUpFilters();
    if (m_setup.locked)
        LockFolder();
    if (m_setup.picksFolder)
        ShowFoldersAlone();
    m_okText = m_ok->text();
    m_roads->FillBox();
    m_changed = ChangeTime(Folder());

    PutName(m_setup.file);
    m_name->selectAll();
    UpdateButtons();
}

void PlatformFileDialog::PutName(DString const &name) {
    m_givenName = name;
    m_name->setText(platform::ToQString(name));
}

void PlatformFileDialog::SetUpViews() {
    static FilePictures pictures; // the toolkit's thread may ask for one while a dialog ends
    setIconProvider(&pictures);
    m_model->setNameFilterDisables(false);
    // A folder that another program writes to would be read again and again; this one is read when the user comes back.
    m_model->setOption(QFileSystemModel::DontWatchForChanges);
    m_views = {findChild<QAbstractItemView *>(QStringLiteral("listView")),
               findChild<QAbstractItemView *>(QStringLiteral("treeView"))};
    for (QAbstractItemView *const view : m_views) {
        view->setSelectionMode(m_setup.multiple ? QAbstractItemView::ExtendedSelection
                                                : QAbstractItemView::SingleSelection);
        view->setDragDropMode(QAbstractItemView::NoDragDrop); // a slip of the mouse would move files
        view->setItemDelegate(new NameDelegate(view));
    }
    FitColumns();
    connect(m_views.front()->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PlatformFileDialog::OnSelectionChanged);
    // By keyboard the toolkit's word comes behind the selection.
    connect(m_views.front()->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &PlatformFileDialog::UpdateButtons);
    connect(m_model, &QFileSystemModel::rootPathChanged, this, [this] { m_isListing = true; });
    connect(m_model, &QFileSystemModel::directoryLoaded, this, [this](QString const &folder) {
        if (folder != m_model->rootPath())
            return;
        m_isListing = false;
        FillUndecoded();
    });
}

void PlatformFileDialog::FitColumns() {
    QHeaderView &columns = *findChild<QTreeView *>(QStringLiteral("treeView"))->header();
    columns.setStretchLastSection(false);
    columns.setSectionResizeMode(0, QHeaderView::Stretch);
    QFontMetrics const metrics = columns.fontMetrics();
    QStyle const &style = *columns.style();
    int const margins = 2 * (style.pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &columns) + 1) +
                        style.pixelMetric(QStyle::PM_HeaderMarkSize, nullptr, &columns) +
                        2 * style.pixelMetric(QStyle::PM_HeaderMargin, nullptr, &columns);
    // As long as they get, but for the names of odd types.
    QDateTime const longest(QDate(2028, 12, 28), QTime(22, 58));
    std::pair<int, QStringList> const texts[] = {
        {kSizeColumn, {QStringLiteral("8,888.88 KiB")}},
        {kTypeColumn, {platform::Shown("%1 File").arg("jpeg"), platform::Shown("Folder")}},
        {kDateColumn,
         {QLocale().toString(longest, QLocale::ShortFormat),
          QLocale::system().toString(longest, QLocale::ShortFormat)}}};
    for (auto const &[column, samples] : texts) {
        int width = metrics.horizontalAdvance(m_model->headerData(column, Qt::Horizontal).toString());
        for (QString const &sample : samples)
            width = std::max(width, metrics.horizontalAdvance(sample));
        columns.resizeSection(column, width + margins);
    }
}

void PlatformFileDialog::SetUpUndecoded() {
    m_undecoded = new UndecodedNames(this);
    findChild<QWidget *>(QStringLiteral("frame"))->layout()->addWidget(m_undecoded);
    connect(m_undecoded, &UndecodedNames::Chosen, this, &PlatformFileDialog::ChooseUndecoded);
    connect(m_undecoded, &UndecodedNames::Activated, this, [this](DString const &name, bool isFolder) {
        if (isFolder && !m_setup.locked) {
            if (GoTo(AppendPath(Folder(), name)))
                m_name->clear();
            return;
        }
        ChooseUndecoded(name);
        accept();
    });
}

void PlatformFileDialog::ChooseUndecoded(DString const &name) {
    m_views.front()->selectionModel()->clear();
    PutName(name);
    m_selectionText.reset();
}

// Behind the toolkit's thread, which has found that the place answers.
void PlatformFileDialog::FillUndecoded() {
    if (DoesPlaceAnswer(Folder()))
        m_undecoded->Fill(Folder(), m_masks, m_setup.picksFolder);
}

void PlatformFileDialog::TakeOverInput() {
    // The toolkit would look at each path that is typed, at every key.
    m_name->disconnect(this);
    m_name->setCompleter(nullptr);
    connect(m_name, &QLineEdit::returnPressed, this, &PlatformFileDialog::accept);
    connect(m_name, &QLineEdit::textEdited, this, [this] { m_selectionText.reset(); });
    connect(m_name, &QLineEdit::textChanged, this, &PlatformFileDialog::UpdateButtons);

    for (QAbstractItemView *const view : m_views) {
        disconnect(view, &QAbstractItemView::activated, this, nullptr);
        connect(view, &QAbstractItemView::activated, this, &PlatformFileDialog::OnActivated);
    }
    connect(findChild<QAction *>(QStringLiteral("qt_delete_action")), &QAction::triggered, this,
            &PlatformFileDialog::Refresh);
    connect(new QShortcut(QKeySequence::Refresh, this), &QShortcut::activated, this, &PlatformFileDialog::Refresh);
}

void PlatformFileDialog::SetUpFilters() {
    setNameFilters({}); // none of the toolkit's own, also when the language changes
    m_types->disconnect(this);
    m_types->clear();
    m_types->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_types->setMinimumContentsLength(kTypesWidth);
    QStringList shown;
    for (FileFilter const &filter : m_setup.filters)
        shown.append(platform::ToQString(ShownFilter({Translated(filter.description.c_str()), filter.masks})));
    m_types->addItems(shown);
    if (m_types->count() > 0) {
        m_types->setCurrentIndex(std::clamp(m_setup.filterIndex, 0, m_types->count() - 1));
        ApplyMasks(m_setup.filters[static_cast<std::size_t>(m_types->currentIndex())].masks);
    }
    m_setup.filterIndex = m_types->currentIndex();
    m_types->setVisible(m_types->count() > 0);
    findChild<QWidget *>(QStringLiteral("fileTypeLabel"))->setVisible(m_types->count() > 0);
    connect(m_types, &QComboBox::activated, this, &PlatformFileDialog::OnFilterChosen);
}

void PlatformFileDialog::LockFolder() {
    setFilter(QDir::Files);
    m_roads->Close();
    // Whatever road is left ends where it began.
    connect(m_model, &QFileSystemModel::rootPathChanged, this, [this](QString const &path) {
        if (path != m_folder->Path())
            setDirectory(m_folder->Path());
    });
}

void PlatformFileDialog::ShowFoldersAlone() {
    setFilter(QDir::Dirs | QDir::NoDotAndDotDot);
    setLabelText(FileName, platform::Shown("Folder:"));
    setLabelText(Accept, platform::Shown("Choose"));
    if (m_setup.makesFolders)
        return;
    findChild<QWidget *>(QStringLiteral("newFolderButton"))->hide(); // its entry in the menu goes with it
    findChild<QAction *>(QStringLiteral("qt_new_folder_action"))->setEnabled(false);
}

void PlatformFileDialog::AddRow(QWidget &row) {
    auto *const grid = qobject_cast<QGridLayout *>(layout());
    grid->addWidget(&row, grid->rowCount(), 0, 1, grid->columnCount());
}

void PlatformFileDialog::ApplyMasks(DString const &masks) {
    QStringList toolkitMasks;
    for (DString const &mask : SingleMasks(masks))
        toolkitMasks.append(ToolkitMask(mask));
    m_model->setNameFilters(toolkitMasks);
    m_masks = JoinNotEmpty(SingleMasks(masks), ';');
    if (!m_isListing)
        FillUndecoded();
}

int PlatformFileDialog::FilterIndex() const { return m_types->currentIndex(); }

void PlatformFileDialog::OnFilterChosen(int index) {
    DString const former = m_setup.filters[static_cast<std::size_t>(m_setup.filterIndex)].masks;
    DString const masks = m_setup.filters[static_cast<std::size_t>(index)].masks;
    m_setup.filterIndex = index;
    ApplyMasks(masks);
    Q_EMIT TypeChosen(index);
    if (m_setup.opens)
        return;
    QString const name = platform::ToQString(
        ForOtherFilter(platform::ToDString(m_name->text()), former, DefaultExtension(masks, m_setup.defaultExtension)));
    if (name == m_name->text())
        return;
    m_views.front()->selectionModel()->clear(); // what stands there now is no longer the row's name
    m_name->setText(name);
    m_selectionText.reset();
}

void PlatformFileDialog::OnSelectionChanged() {
    auto const rows = m_views.front()->selectionModel()->selectedRows();
    if (!rows.isEmpty())
        m_undecoded->clearSelection();
    if (m_setup.picksFolder && !rows.isEmpty())
        m_name->setText(m_model->fileName(rows.front()));
    if (!m_name->hasFocus())
        m_selectionText = m_name->text();
    UpdateButtons();
}

void PlatformFileDialog::UpdateButtons() {
    bool const hasAnswer = !m_name->text().trimmed().isEmpty() || m_views.front()->selectionModel()->hasSelection();
    // The toolkit says "Open" while a folder is selected.
    m_ok->setText(m_okText);
    m_ok->setEnabled(m_setup.picksFolder ? CanPick(PickedFolder()) : hasAnswer);
    m_roads->UpdateButtons();
}

bool PlatformFileDialog::GoTo(DString const &folder) { return m_roads->GoTo(folder); }

bool PlatformFileDialog::ShowFolder(DString const &folder) {
    if (m_setup.locked)
        return false;
    if (!IsFolder(folder)) {
        Report::UserNotificationEnforced("Folder '%s' not found", folder.c_str());
        return false;
    }
    if (HoldsDeadPlace(folder)) {
        Report::UserNotificationEnforced("Folder '%s' holds a place that does not answer", folder.c_str());
        return false;
    }
    // A name that was typed stays; one that came from a row to be loaded is not in the other folder.
    bool const isOfRows = m_setup.opens && m_selectionText && *m_selectionText == m_name->text();
    QString const name = isOfRows || m_setup.picksFolder ? QString() : m_name->text();
    auto const former = std::exchange(m_folder, std::make_unique<FolderAlias const>(folder));
    m_undecoded->clear();
    setDirectory(m_folder->Path());
    m_name->setText(name);
    m_selectionText.reset();
    m_changed = ChangeTime(folder);
    m_roads->FillBox();
    return true;
}

void PlatformFileDialog::OnActivated(QModelIndex const &index) {
    // Where a single click activates, this one only selects.
    bool const onlySelects = (QApplication::keyboardModifiers() & (Qt::ControlModifier | Qt::ShiftModifier)) != 0;
    if (m_setup.multiple && onlySelects)
        return;
    if (m_model->isDir(index))
        GoTo(AppendPath(Folder(), NameBytes(Folder(), m_model->fileName(index))));
    else
        accept();
}

void PlatformFileDialog::Refresh() {
    m_changed = ChangeTime(Folder());
    if (m_changed == 0 || HoldsDeadPlace(Folder()))
        return;
    // The toolkit reads a folder only when it comes from another one.
    QSignalBlocker const quiet(m_model);
    m_isListing = true;
    std::ignore = m_model->setRootPath({});
    std::ignore = m_model->setRootPath(m_folder->Path());
}

void PlatformFileDialog::RefreshIfChanged() {
    std::int64_t const changed = ChangeTime(Folder());
    if (changed != 0 && changed != m_changed)
        Refresh();
}

void PlatformFileDialog::changeEvent(QEvent *event) {
    QFileDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        RefreshIfChanged();
}

} // namespace zelvar
