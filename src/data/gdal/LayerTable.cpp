#include "zelvar/data/gdal/LayerTable.h"

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_string.h>
#include <gdal.h>
#include <ogr_api.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <tuple>
#include <utility>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kLongestName = 1024;
constexpr char const *kEncodingOption = "ENCODING";
constexpr char const *kEncodingSetting = "SHAPE_ENCODING"; // of this thread; empty for texts as they are

template <class Number>
DString ShortestText(Number value) {
    std::array<char, 64> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), end.ptr};
}

} // namespace

void LayerTable::DestroyFeature::operator()(void *feature) const { OGR_F_Destroy(feature); }

std::unique_ptr<LayerTable> LayerTable::Open(Source const &source, Format const *only, StopSignal const *stop,
                                             DError *error) {
    GdalScope const scope(source.reach);
    std::unique_ptr<LayerTable> table(new LayerTable(stop));
    if (!table->OpenLayer(source, only, error))
        return nullptr;
    if (DString const encoding = table->StatedEncoding(source); !encoding.empty()) {
        table->m_recoder = TextRecoder::Create(encoding);
        if (table->m_recoder != nullptr && !table->OpenUncoded(source))
            return nullptr;
    }
    table->DescribeColumns();
    return table;
}

bool LayerTable::OpenLayer(Source const &source, Format const *only, DError *error) {
    OpenedSource opened = gdal::Open(source, GDAL_OF_VECTOR, only, error);
    if (!opened)
        return false;
    m_dataset = std::move(opened.dataset);
    m_format = opened.format;
    m_isOfService = source.service.has_value();
    return ChooseLayer(source.layer, error);
}

/// What a dBASE table says of its texts, where that is not UTF-8: an option of the moniker, the file with the code page
/// beside it, the byte for the language. A statement that means nothing counts as none.
DString LayerTable::StatedEncoding(Source const &source) const {
    if (m_format->id != "ESRI Shapefile")
        return {};
    auto const stated = [this](char const *name) {
        char const *const text = GDALGetMetadataItem(m_layer, name, "SHAPEFILE");
        return DString(text == nullptr ? "" : text);
    };
    DString encoding = stated("SOURCE_ENCODING");
    bool const isChosen = std::any_of(source.options.begin(), source.options.end(), [](auto const &option) {
        return EqualNoCase(option.first, kEncodingOption) && !option.second.empty();
    });
    constexpr std::string_view ansi = "ANSI ";
    if (DString const page = stated("CPG_VALUE"); encoding.empty() && StartsWithNoCase(page, ansi))
        encoding = "CP" + page.substr(ansi.size());
    if (encoding.empty() || TextRecoder::Create(encoding) == nullptr)
        encoding = stated("ENCODING_FROM_LDID");
    // "Windows ANSI" is not Latin-1: characters stand where that has none.
    if (!isChosen && stated("CPG_VALUE").empty() && stated("LDID_VALUE") == "87")
        encoding = "CP1252";
    return EqualNoCase(encoding, CPL_ENC_UTF8) ? DString() : encoding;
}

/// Opens the same table again, its texts as the file has them.
bool LayerTable::OpenUncoded(Source const &source) {
    Source plain = source;
    std::erase_if(plain.options, [](auto const &option) { return EqualNoCase(option.first, kEncodingOption); });
    CPLSetThreadLocalConfigOption(kEncodingSetting, ""); // until the end of the scope
    return OpenLayer(plain, m_format, nullptr);
}

void LayerTable::AppendRecoded(DString &out, char const *text, std::size_t most) const {
    std::string_view const bytes = text == nullptr ? "" : text;
    if (m_recoder == nullptr)
        AppendText(out, bytes, most);
    else
        AppendText(out, m_recoder->ToUtf8(DString(bytes)), most);
}

bool LayerTable::ChooseLayer(DString const &name, DError *error) {
    GDALDatasetH dataset = Raw(m_dataset);
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
    OGRFeatureDefnH definition = OGR_L_GetLayerDefn(m_layer);
    int const count = OGR_FD_GetFieldCount(definition);
    for (int i = 0; i < count; ++i) {
        OGRFieldDefnH field = OGR_FD_GetFieldDefn(definition, i);
        OGRFieldType const type = OGR_Fld_GetType(field);
        bool const isWhole = type == OFTInteger || type == OFTInteger64;
        ADIColumn column;
        AppendRecoded(column.name, OGR_Fld_GetNameRef(field), kLongestName);
        column.type = isWhole ? ADICol_Int : type == OFTReal ? ADICol_Double : ADICol_String;
        m_columns.push_back(std::move(column));
        Field::Kind const real = OGR_Fld_GetSubType(field) == OFSTFloat32 ? Field::Kind::Real32 : Field::Kind::Real;
        m_fields.push_back(
            {.kind = type == OFTReal ? real : Field::Kind::Text, .decimals = OGR_Fld_GetPrecision(field)});
    }
    std::array<char const *, 3> places{"OGR_GEOMETRY", "OGR_STYLE", nullptr};
    if (OGR_L_TestCapability(m_layer, OLCIgnoreFields) != 0)
        std::ignore = OGR_L_SetIgnoredFields(m_layer, places.data()); // a saving only
}

std::int64_t LayerTable::GoBack(std::int64_t) {
    OGR_L_ResetReading(m_layer);
    return 0;
}

bool LayerTable::Step() {
    CPLErrorReset();
    m_feature.reset(OGR_L_GetNextFeature(m_layer));
    // Some formats make up a row where the file has ended early.
    bool const isMadeUp = CPLGetLastErrorType() >= CE_Failure && CPLGetLastErrorNo() == CPLE_FileIO;
    m_hasFailed = m_isOfService && m_feature == nullptr && CPLGetLastErrorType() >= CE_Failure;
    return m_feature != nullptr && !isMadeUp;
}

bool LayerTable::Append(ADIRows &rows) const {
    std::size_t const begin = rows.texts.size();
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        int const field = static_cast<int>(i);
        if (OGR_F_IsFieldSetAndNotNull(m_feature.get(), field) != 0) {
            if (m_fields[i].kind == Field::Kind::Text)
                AppendRecoded(rows.texts, OGR_F_GetFieldAsString(m_feature.get(), field), ADIDriver::kMostCellBytes);
            else
                rows.texts += RealText(i);
        }
        if (rows.texts.size() - begin > ADIDriver::kMostRowBytes)
            return false;
        rows.ends.push_back(static_cast<std::uint32_t>(rows.texts.size()));
    }
    return true;
}

/// All digits that a number has, with the decimals that its column says where they show it whole and are meant: formats
/// that must say some say many.
DString LayerTable::RealText(std::size_t column) const {
    Field const &field = m_fields[column];
    double const value = OGR_F_GetFieldAsDouble(m_feature.get(), static_cast<int>(column));
    constexpr double widest = 1e15;
    constexpr int mostMeant = 8;
    if (field.decimals > 0 && field.decimals <= mostMeant && value > -widest && value < widest) {
        DString text = FormatDouble(value, field.decimals);
        double read = 0;
        std::from_chars(text.data(), text.data() + text.size(), read);
        if (read == value)
            return text;
    }
    return field.kind == Field::Kind::Real32 ? ShortestText(static_cast<float>(value)) : ShortestText(value);
}

} // namespace zelvar::gdal
