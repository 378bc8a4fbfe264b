#pragma once

#include "zelvar/base/DFileFrmt.h"

namespace zelvar {

/// The formats that the file dialog service knows by itself. They are made when the library is loaded, or earlier if
/// another static object asks, and stay to the end of the process.
struct ZELVAR_API BuiltInFormats {
    DFileFrmt frmt_all{"", "All Files", "*.*"};
    DFileFrmt frmt_txt{nullptr, "Ascii text files", "*.txt"};
    DFileFrmt frmt_csv{"CSV", "Comma separated list files", "*.csv"};
    DFileFrmt frmt_tcsv{"TCSV", "Comma separated list files (Transposed)", "*.tcsv"};
    DFileFrmt frmt_tif{nullptr, "Tagged image files", "*.tif"};
    DFileFrmt frmt_shp{nullptr, "Shape files", "*.shp"};
    DFileFrmt frmt_dbf{nullptr, "DBase files", "*.dbf"};
    DFileFrmt frmt_das{"DAS", "ArcSDE connection files", "*.das"};
    DFileFrmt frmt_aperio{"APERIO_VDI", "Aperio annotation files", "*.xml"};
    DFileFrmt frmt_xml{nullptr, "XML files", "*.xml"};
    DFileFrmt frmt_html{"HTML", "HTML files", "*.html"};
    DFileFrmt frmt_snippets{"Snippets", "Snippet files", "*.slb"};

    static BuiltInFormats &Instance();

    BuiltInFormats(BuiltInFormats const &) = delete;
    BuiltInFormats &operator=(BuiltInFormats const &) = delete;

private:
    BuiltInFormats() = default;
};

} // namespace zelvar
