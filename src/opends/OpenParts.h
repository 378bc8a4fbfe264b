#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/OpenFeatures.h"

#include <QtCore/QObject>

#include <functional>
#include <list>
#include <memory>

class QPoint;

namespace zelvar {

class BasketStrip;
class DataSetRows;
class DriverChoices;
class NamedData;
class OpenFavorites;
class OpenFields;
class OpenForecast;
class OpenPanes;
class OpenSearch;
class PlaceFinder;
class PlaceTravel;
class SearchPlace;
class SelectionOptions;
class ThumbnailLook;

/// What the open dialog has beyond its panes, made and joined as its features say: a part that is not offered is null.
/// User-interface thread.
class OpenParts : public QObject {
    Q_OBJECT

public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    /// All that is referred to outlives this.
    struct Setup {
        DlgOpenDS &dialog;
        OpenPanes &panes;
        OpenFields &fields;
        SelectionOptions &options;
        PlaceFinder const &places;
        unsigned features = kOpenPlain;
        DLGTemplate dlgTemplate = DT_DATA;
        DString key{};                       ///< of the settings of dialogs like this
        int nodeMask = 0;                    ///< of what can be picked
        bool hasSources = true;              ///< not one item alone in their place
        bool takesBasket = false;            ///< what is gathered can be the result
        std::function<void()> pickedAgain{}; ///< what is selected is read and shown anew
        std::function<void()> changed{};     ///< what can be done about the dialog may be another now
    };
    explicit OpenParts(Setup setup);
    ~OpenParts() override;
    /// The search, with its button in the row of the others, which are there by now.
    void AddSearch();
    void Update(); ///< to be called a few times a second

    [[nodiscard]] PlaceTravel *Travel() const { return m_travel.get(); }
    [[nodiscard]] BasketStrip *Basket() const { return m_basket.get(); }
    [[nodiscard]] NamedData *Named() const { return m_named.get(); }
    [[nodiscard]] OpenSearch *Search() const { return m_search.get(); }
    [[nodiscard]] OpenForecast *Forecast() const { return m_forecast.get(); }
    [[nodiscard]] ThumbnailLook *Thumbnails() const { return m_thumbnails.get(); }
    [[nodiscard]] OpenFavorites *Favorites() const { return m_favorites.get(); }
    [[nodiscard]] SearchPlace const *PlaceOfSearch() const { return m_searchPlace.get(); } ///< null without a search

    /// Nothing where nothing was gathered, or nothing can be.
    [[nodiscard]] bool HasGathered() const;
    void AddToBasket(ItemList const &items);
    void ForgetSelection(); ///< preview, path and line show nothing
    /// What a moniker of that path brought along; empty without one.
    [[nodiscard]] DString NamedOptions(DString const &path) const;
    [[nodiscard]] DriverChoices const *Drivers() const; ///< null where none can be chosen

private:
    [[nodiscard]] bool Has(OpenFeatures feature) const { return (m_setup.features & feature) != 0; }
    void AddTravel();
    void AddBasket();
    void AddDataSets();
    void AddForecast();
    void AddMenu();
    void RunItemMenu(QPoint screenPoint);
    void CopyMonikers(ItemList const &items) const;

    Setup m_setup;
    std::unique_ptr<OpenFavorites> m_favorites;
    std::unique_ptr<PlaceTravel> m_travel;
    std::unique_ptr<BasketStrip> m_basket;
    std::unique_ptr<DataSetRows> m_dataSets;
    std::unique_ptr<NamedData> m_named;
    std::unique_ptr<OpenForecast> m_forecast;
    std::unique_ptr<ThumbnailLook> m_thumbnails;
    std::unique_ptr<SearchPlace> m_searchPlace;
    std::unique_ptr<OpenSearch> m_search;
};

} // namespace zelvar
