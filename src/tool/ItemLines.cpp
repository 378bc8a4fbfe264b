#include "zelvar/tool/ItemLines.h"

#include "zelvar/base/ByteEscapes.h"
#include "zelvar/model/SeriesItem.h"
#include "zelvar/model/TemplDataSourceItem.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace zelvar::tool {

namespace {

void PutNumber(DString &out, unsigned number, std::size_t digits) {
    DString const text = std::to_string(number);
    out.append(digits - std::min(digits, text.size()), '0').append(text);
}

DString TimeText(SystemTime const &time) {
    DString text;
    PutNumber(text, time.wYear, 4);
    for (auto const &[separator, number] :
         {std::pair{'-', time.wMonth}, {'-', time.wDay}, {'T', time.wHour}, {':', time.wMinute}, {':', time.wSecond}}) {
        text += separator;
        PutNumber(text, number, 2);
    }
    return text;
}

/// What its driver tells of a node besides: "table, about 1200 rows"; empty for most.
DString DetailsOf(ListedItem const &item) {
    auto const *const inTree = dynamic_cast<TemplDataSourceItem const *>(item.item.get());
    return inTree == nullptr || inTree->GetNode() == nullptr ? DString() : inTree->GetNode()->value;
}

} // namespace

DString JsonText(DString const &bytes) {
    DString json = "\"";
    for (char const c : EscapeToUtf8(bytes)) {
        if (c == '"' || c == '\\')
            json += DString{'\\', c};
        else if (static_cast<unsigned char>(c) < 0x20)
            json += Format("\\u%04x", static_cast<unsigned>(c));
        else
            json += c;
    }
    return json + "\"";
}

DString LineOf(ListedItem const &item) {
    DString line = ToText(item.kind);
    line.append("\t").append(std::to_string(item.size));
    line.append("\t").append(item.time ? TimeText(*item.time) : "-");
    line.append("\t").append(EscapeControlBytes(item.name));
    line.append("\t").append(EscapeControlBytes(item.path));
    if (auto const *const series = dynamic_cast<SeriesItem const *>(item.item.get()))
        line.append("\t").append(series->Summary());
    if (DString const details = DetailsOf(item); !details.empty())
        line.append("\t").append(EscapeControlBytes(details));
    return line.append("\n");
}

DString JsonOf(ListedItem const &item) {
    DString line = "\n  {\"kind\": \"";
    line.append(ToText(item.kind)).append("\", \"size\": ").append(std::to_string(item.size));
    line.append(", \"time\": ").append(item.time ? JsonText(TimeText(*item.time)) : "null");
    line.append(", \"name\": ").append(JsonText(item.name));
    if (auto const *const series = dynamic_cast<SeriesItem const *>(item.item.get()))
        line.append(", \"members\": ").append(JsonText(series->Summary()));
    if (DString const details = DetailsOf(item); !details.empty())
        line.append(", \"details\": ").append(JsonText(details));
    return line.append(", \"path\": ").append(JsonText(item.path)).append("}");
}

void Print(DString const &text) { std::fwrite(text.data(), 1, text.size(), stdout); }

} // namespace zelvar::tool
