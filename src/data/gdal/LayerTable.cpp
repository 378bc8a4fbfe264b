#include "zelvar/data/gdal/LayerTable.h"

#include <cpl_error.h>
#include <gdal.h>
#include <ogr_api.h>

#include <array>
#include <charconv>
#include <tuple>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kLongestName = 1024;

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
    OpenedSource opened = gdal::Open(source, GDAL_OF_VECTOR, only, error);
    if (!opened)
        return nullptr;
    GdalScope const scope(source.reach);
    std::unique_ptr<LayerTable> table(new LayerTable(source.reach, stop));
    table->m_dataset = std::move(opened.dataset);
    table->m_format = opened.format;
    if (!table->ChooseLayer(source.layer, error))
        return nullptr;
    table->DescribeColumns();
    return table;
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
        char const *const name = OGR_Fld_GetNameRef(field);
        AppendText(column.name, name == nullptr ? "" : name, kLongestName);
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
    return m_feature != nullptr && !isMadeUp;
}

bool LayerTable::Append(ADIRows &rows) const {
    std::size_t const begin = rows.texts.size();
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        int const field = static_cast<int>(i);
        if (OGR_F_IsFieldSetAndNotNull(m_feature.get(), field) != 0) {
            if (m_fields[i].kind == Field::Kind::Text)
                AppendText(rows.texts, OGR_F_GetFieldAsString(m_feature.get(), field), ADIDriver::kMostCellBytes);
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
