#pragma once

#include "zelvar/base/DFileFrmt.h"
#include "zelvar/base/Translation.h"

namespace zelvar {

/// The formats that the file dialog service knows by itself. They are made when the library is loaded, or earlier if
/// another static object asks, and stay to the end of the process.
struct ZELVAR_API BuiltInFormats {
    DFileFrmt frmt_all{"", Mark("All Files"), "*.*"};
    DFileFrmt frmt_txt{nullptr, Mark("Ascii text files"), "*.txt"};
    DFileFrmt frmt_csv{"CSV", Mark("Comma separated list files"), "*.csv"};
    DFileFrmt frmt_tcsv{"TCSV", Mark("Comma separated list files (Transposed)"), "*.tcsv"};
    DFileFrmt frmt_tif{nullptr, Mark("Tagged image files"), "*.tif"};
    DFileFrmt frmt_shp{nullptr, Mark("Shape files"), "*.shp"};
    DFileFrmt frmt_dbf{nullptr, Mark("DBase files"), "*.dbf"};
    DFileFrmt frmt_das{"DAS", Mark("ArcSDE connection files"), "*.das"};
    DFileFrmt frmt_aperio{"APERIO_VDI", Mark("Aperio annotation files"), "*.xml"};
    DFileFrmt frmt_xml{nullptr, Mark("XML files"), "*.xml"};
    DFileFrmt frmt_html{"HTML", Mark("HTML files"), "*.html"};
    DFileFrmt frmt_snippets{"Snippets", Mark("Snippet files"), "*.slb"};

    static BuiltInFormats &Instance();

    BuiltInFormats(BuiltInFormats const &) = delete;
    BuiltInFormats &operator=(BuiltInFormats const &) = delete;

private:
    BuiltInFormats() = default;
};

} // namespace zelvar
