// The list of a table's rows from a file's name to its first page on the screen.
#pragma once

#include "zelvar/data/tables/ADIFile.h"
#include "zelvar/lists/CADIListCtrl.h"

#include <QtGui/QWindow>
#include <QtWidgets/QApplication>

namespace zelvar::bench {

/// A file opened for reading alone; the list takes it.
inline ADIFile *OpenTable(std::string const &path) {
    return new ADIFile(DFile(path), "", tdFormatAccess_Read, nullptr, nullptr);
}

/// Shows all columns and the number of each row, and comes back once the first page has been read and painted.
inline void ShowFirstPage(CADIListCtrl &list) {
    list.AddAllColumns();
    list.SetNumRow(1, 0);
    list.resize(800, 600);
    list.show();
    while (!list.windowHandle()->isExposed() || list.GetCacheRows() < list.GetCountPerPage())
        QApplication::processEvents();
}

} // namespace zelvar::bench
