#include "zelvar/filedlg/UndecodedNames.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/filedlg/NameBytes.h"
#include "zelvar/filedlg/NameDelegate.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QStyle>

#include <algorithm>
#include <memory>

#include <dirent.h>

namespace zelvar {

namespace {

constexpr int kBytesRole = Qt::UserRole;
constexpr int kFolderRole = Qt::UserRole + 1;
constexpr int kMostRows = 4; // in sight
constexpr int kMostNames = 10'000;

struct Closer {
    void operator()(DIR *directory) const { closedir(directory); }
};

DString NameOf(QListWidgetItem const &item) { return item.data(kBytesRole).toByteArray().toStdString(); }

} // namespace

UndecodedNames::UndecodedNames(QWidget *parent) : QListWidget(parent) {
    setObjectName(QStringLiteral("undecodedNames"));
    setAccessibleName(platform::Shown("Names that are not UTF-8"));
    setToolTip(accessibleName());
    setUniformItemSizes(true);
    setSortingEnabled(true);
    setItemDelegate(new NameDelegate(this));
    hide();
    // Who passes by with Tab makes an item the current one and chooses none.
    connect(this, &QListWidget::itemSelectionChanged, this, [this] {
        if (!selectedItems().isEmpty())
            Q_EMIT Chosen(NameOf(*selectedItems().front()));
    });
    connect(this, &QListWidget::itemActivated, this,
            [this](QListWidgetItem const *item) { Q_EMIT Activated(NameOf(*item), item->data(kFolderRole).toBool()); });
}

void UndecodedNames::Fill(DString const &folder, DString const &masks, bool foldersAlone) {
    clear();
    std::unique_ptr<DIR, Closer> const directory(opendir(folder.c_str()));
    for (dirent const *entry = nullptr;
         directory != nullptr && count() < kMostNames && (entry = readdir(directory.get())) != nullptr;) {
        DString const name(entry->d_name);
        bool const isFolder = entry->d_type == DT_DIR;
        bool const isWanted = isFolder || (!foldersAlone && (masks.empty() || PathMatchSpec(name, masks)));
        if (IsUtf8(name) || !isWanted)
            continue;
        auto *const item =
            new QListWidgetItem(style()->standardIcon(isFolder ? QStyle::SP_DirIcon : QStyle::SP_FileIcon),
                                platform::ToQString(name), this);
        item->setData(kBytesRole, QByteArray(name.data(), static_cast<qsizetype>(name.size())));
        item->setData(kFolderRole, isFolder);
    }
    if (count() > 0)
        setFixedHeight(sizeHintForRow(0) * std::min(count(), kMostRows) + 2 * frameWidth());
    setVisible(count() > 0);
}

// Return has chosen an entry by then: it is not the dialog's as well.
void UndecodedNames::keyPressEvent(QKeyEvent *event) {
    bool const isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    QListWidget::keyPressEvent(event);
    if (isReturn)
        event->accept();
}

} // namespace zelvar
