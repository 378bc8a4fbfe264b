#pragma once

#include <QtGui/QAbstractFileIconProvider>
#include <QtGui/QIcon>

namespace zelvar {

/// Pictures and kinds of files by what the folder tells alone. The toolkit's own provider reads the beginning of each
/// file to find out its kind, which takes minutes in a large folder. Asked by the thread that lists.
class FilePictures final : public QAbstractFileIconProvider {
public:
    FilePictures();
    [[nodiscard]] QIcon icon(IconType type) const override;
    [[nodiscard]] QIcon icon(QFileInfo const &info) const override;
    [[nodiscard]] QString type(QFileInfo const &info) const override;

private:
    QIcon m_folder;
    QIcon m_drive;
    QIcon m_file;
};

} // namespace zelvar
