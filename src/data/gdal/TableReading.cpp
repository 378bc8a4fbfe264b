#include "zelvar/data/gdal/TableReading.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/RequestScope.h"

#include <cpl_error.h>
#include <gdal.h>
#include <ogr_api.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace zelvar::gdal {

namespace {

constexpr int kRowsThatSuggest = 100; // the types of columns
constexpr std::size_t kLongestName = 1024;

bool IsText(Format const &format) { return format.id == "CSV"; }

/// The opened file; one of plain text is read as comma-separated values whatever its name is, where nothing else reads
/// it.
OpenedSource OpenLayers(Source source, Utf8Copy const *copy, Format const *only, DError *error) {
    Format const *const text = Formats::Instance().Find("CSV");
    if (copy != nullptr) {
        source.name = "CSV:" + copy->Name();
        return gdal::Open(source, GDAL_OF_VECTOR, text, error);
    }
    OpenedSource opened = gdal::Open(source, GDAL_OF_VECTOR, only, error);
    if (opened || text == nullptr || (only != nullptr && only != text) || !IsPlainText(source, only == text))
        return opened;
    source.name = "CSV:" + source.name;
    return gdal::Open(source, GDAL_OF_VECTOR, text, error);
}

/// Valid UTF-8, not longer than `most`.
void AppendText(DString &out, std::string_view text, std::size_t most) {
    if (text.size() > most) {
        Report::TraceMessage(Report::kTraceDriver, "a text of %zu bytes is cut", text.size());
        std::size_t end = most;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80)
            --end;
        text = text.substr(0, end);
    }
    bool const isAscii =
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (isAscii)
        out.append(text);
    else
        out.append(ToValidUtf8(text));
}

/// What a text looks like: a number that keeps all that is written as one, or a text.
ADIColType TypeOf(std::string_view text) {
    constexpr std::size_t mostDigits = 18;
    std::string_view const digits = text.starts_with('-') ? text.substr(1) : text;
    bool const begins = !digits.empty() && ((digits[0] >= '0' && digits[0] <= '9') || digits[0] == '.');
    bool const zeroInFront = digits.size() > 1 && digits[0] == '0' && digits[1] >= '0' && digits[1] <= '9';
    if (!begins || zeroInFront)
        return ADICol_String;
    if (digits.find_first_not_of("0123456789") == std::string_view::npos)
        return digits.size() <= mostDigits ? ADICol_Int : ADICol_String;
    double value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() ? ADICol_Double : ADICol_String;
}

/// The type of a column with a cell of type `cell`, when the cells before suggest `so` (none at first).
ADIColType Widened(ADIColType so, ADIColType cell) {
    // Whole numbers come before others, and those before texts.
    return so == ADICol_None ? cell : std::max(so, cell);
}
static_assert(ADICol_Int < ADICol_Double && ADICol_Double < ADICol_String);

template <class Number>
DString ShortestText(Number value) {
    std::array<char, 64> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), end.ptr};
}

} // namespace

void LayerTable::DestroyFeature::operator()(void *feature) const { OGR_F_Destroy(feature); }

std::unique_ptr<LayerTable> LayerTable::Open(BDIMoniker const &moniker, Format const *only, StopSignal const *stop,
                                             DError *error) {
    auto const source = Resolve(moniker, error);
    if (!source)
        return nullptr;
    std::unique_ptr<LayerTable> table(new LayerTable);
    if (only == nullptr || IsText(*only))
        table->m_copy = Utf8Copy::Of(*source);
    OpenedSource opened = OpenLayers(*source, table->m_copy.get(), only, error);
    if (!opened)
        return nullptr;
    table->m_dataset = std::move(opened.dataset);
    table->m_format = opened.format;
    table->m_reach = source->reach;
    table->m_stop = stop;
    GdalScope const scope(source->reach);
    if (!table->ChooseLayer(source->layer, error))
        return nullptr;
    table->DescribeColumns();
    if (IsText(*table->m_format))
        table->SuggestTypes();
    return table;
}

bool LayerTable::ChooseLayer(DString const &name, DError *error) {
    GDALDatasetH const dataset = Raw(m_dataset);
    if (!name.empty())
        m_layer = GDALDatasetGetLayerByName(dataset, name.c_str());
    else if (GDALDatasetGetLayerCount(dataset) > 0)
        m_layer = GDALDatasetGetLayer(dataset, 0);
    std::size_t columns = 0;
    if (m_layer != nullptr)
        columns = static_cast<std::size_t>(OGR_FD_GetFieldCount(OGR_L_GetLayerDefn(m_layer)));
    if (m_layer != nullptr && columns <= ADIDriver::kMostColumns)
        return true;
    if (error != nullptr)
        error->Set(m_layer == nullptr ? "there is no table \"" + name + "\""
                                      : zelvar::Format("a table of %zu columns is too wide", columns));
    return false;
}

void LayerTable::DescribeColumns() {
    OGRFeatureDefnH const definition = OGR_L_GetLayerDefn(m_layer);
    int const count = OGR_FD_GetFieldCount(definition);
    for (int i = 0; i < count; ++i) {
        OGRFieldDefnH const field = OGR_FD_GetFieldDefn(definition, i);
        OGRFieldType const type = OGR_Fld_GetType(field);
        bool const isWhole = type == OFTInteger || type == OFTInteger64;
        ADIColumn column;
        char const *const name = OGR_Fld_GetNameRef(field);
        AppendText(column.name, name == nullptr ? "" : name, kLongestName);
        column.type = isWhole ? ADICol_Int : type == OFTReal ? ADICol_Double : ADICol_String;
        m_columns.push_back(std::move(column));
        Kind const real = OGR_Fld_GetSubType(field) == OFSTFloat32 ? Kind::Real32 : Kind::Real;
        m_kinds.push_back(type == OFTReal ? real : type == OFTString ? Kind::Text : Kind::Other);
        m_decimals.push_back(OGR_Fld_GetPrecision(field));
    }
    constexpr std::array<char const *, 3> places{"OGR_GEOMETRY", "OGR_STYLE", nullptr};
    if (OGR_L_TestCapability(m_layer, OLCIgnoreFields) != 0)
        std::ignore = OGR_L_SetIgnoredFields(m_layer, const_cast<char const **>(places.data())); // a saving only
}

void LayerTable::SuggestTypes() {
    std::vector<ADIColType> types(m_columns.size(), ADICol_None);
    ADIRows rows;
    for (int row = 0; row < kRowsThatSuggest && rows.texts.size() < ADIDriver::kBatchBytes; ++row) {
        FeaturePtr const feature = IsStopped() ? nullptr : Next();
        rows.ends.clear();
        std::size_t const begin = rows.texts.size();
        if (feature == nullptr || !Append(feature.get(), rows))
            break;
        std::size_t from = begin;
        for (std::size_t i = 0; i < types.size(); ++i) {
            std::string_view const text = std::string_view(rows.texts).substr(from, rows.ends[i] - from);
            from = rows.ends[i];
            if (!text.empty())
                types[i] = Widened(types[i], TypeOf(text));
        }
    }
    for (std::size_t i = 0; i < types.size(); ++i)
        if (m_kinds[i] == Kind::Text && types[i] != ADICol_None)
            m_columns[i].type = types[i];
    OGR_L_ResetReading(m_layer);
    m_next = 0;
}

bool LayerTable::IsStopped() {
    constexpr unsigned looksPerQuestion = 64;
    if (m_stop != nullptr && m_stop->load(std::memory_order_relaxed))
        return true;
    RequestScope const *const scope = RequestScope::Current();
    if (scope == nullptr || m_looks++ % looksPerQuestion != 0)
        return false;
    return scope->IsStopped() || scope->TimeLeft() <= std::chrono::milliseconds(0);
}

LayerTable::FeaturePtr LayerTable::Next() {
    CPLErrorReset();
    FeaturePtr feature(OGR_L_GetNextFeature(m_layer));
    // Some formats make up a row where the file has ended early.
    if (CPLGetLastErrorType() >= CE_Failure && CPLGetLastErrorNo() == CPLE_FileIO)
        feature.reset();
    if (feature == nullptr)
        m_end = m_next;
    else
        ++m_next;
    return feature;
}

bool LayerTable::GoTo(std::int64_t row) {
    if (row < m_next) {
        OGR_L_ResetReading(m_layer);
        m_next = 0;
    }
    while (m_next < row && (!m_end || m_next < *m_end)) {
        if (IsStopped())
            return false;
        if (Next() == nullptr)
            break;
    }
    return true;
}

bool LayerTable::ReadRows(std::int64_t first, int most, ADIRows &rows) {
    GdalScope const scope(m_reach);
    rows = {};
    rows.first = first;
    if (m_end && first >= *m_end) {
        rows.isEnd = true;
        return true;
    }
    m_looks = 0;
    if (!GoTo(first))
        return false;
    while (rows.count < most && rows.texts.size() < ADIDriver::kBatchBytes &&
           rows.ends.size() < ADIDriver::kBatchCells) {
        if (IsStopped())
            return false;
        if (m_end && m_next >= *m_end)
            break;
        FeaturePtr const feature = Next();
        std::size_t const cells = rows.ends.size();
        std::size_t const bytes = rows.texts.size();
        if (feature == nullptr)
            break;
        if (!Append(feature.get(), rows)) {
            Report::TraceMessage(Report::kTraceOpen, "row %lld is too long: the table ends before it",
                                 static_cast<long long>(m_next));
            rows.ends.resize(cells);
            rows.texts.resize(bytes);
            m_end = --m_next;
            break;
        }
        ++rows.count;
    }
    rows.isEnd = m_end && first + rows.count >= *m_end;
    return true;
}

bool LayerTable::Append(OGRFeatureH feature, ADIRows &rows) const {
    std::size_t const begin = rows.texts.size();
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        int const field = static_cast<int>(i);
        if (OGR_F_IsFieldSetAndNotNull(feature, field) != 0) {
            if (m_kinds[i] == Kind::Real || m_kinds[i] == Kind::Real32)
                rows.texts += RealText(feature, field);
            else
                AppendText(rows.texts, OGR_F_GetFieldAsString(feature, field), ADIDriver::kMostCellBytes);
        }
        if (rows.texts.size() - begin > ADIDriver::kMostRowBytes)
            return false;
        rows.ends.push_back(static_cast<std::uint32_t>(rows.texts.size()));
    }
    return true;
}

/// All digits that a number has, with the decimals that its column says where they show it whole and are meant: formats
/// that must say some say many.
DString LayerTable::RealText(OGRFeatureH feature, int field) const {
    auto const i = static_cast<std::size_t>(field);
    double const value = OGR_F_GetFieldAsDouble(feature, field);
    constexpr double widest = 1e15;
    constexpr int mostMeant = 8;
    if (m_decimals[i] > 0 && m_decimals[i] <= mostMeant && value > -widest && value < widest) {
        DString text = FormatDouble(value, m_decimals[i]);
        double read = 0;
        std::from_chars(text.data(), text.data() + text.size(), read);
        if (read == value)
            return text;
    }
    return m_kinds[i] == Kind::Real32 ? ShortestText(static_cast<float>(value)) : ShortestText(value);
}

} // namespace zelvar::gdal
