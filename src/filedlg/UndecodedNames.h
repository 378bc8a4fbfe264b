#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QListWidget>

namespace zelvar {

/// The entries of a folder whose names are no UTF-8, which the toolkit's lists leave out. Hidden where there are none.
class UndecodedNames final : public QListWidget {
    Q_OBJECT

public:
    explicit UndecodedNames(QWidget *parent = nullptr);

    /// Shows those of a folder, which answers: its folders, and unless they are to be left out the files that one of
    /// `masks` fits. Looks at names alone.
    void Fill(DString const &folder, DString const &masks, bool foldersAlone);

protected:
    void keyPressEvent(QKeyEvent *event) override;

Q_SIGNALS:
    void Chosen(DString const &name);
    void Activated(DString const &name, bool isFolder);
};

} // namespace zelvar
