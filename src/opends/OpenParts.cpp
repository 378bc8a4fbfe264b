#include "zelvar/opends/OpenParts.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/data/BDIDrvr.h"
#include "zelvar/opends/BasketStrip.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DataSetRows.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/FavoriteRows.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/NamedData.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/opends/OpenFavorites.h"
#include "zelvar/opends/OpenFields.h"
#include "zelvar/opends/OpenForecast.h"
#include "zelvar/opends/OpenLine.h"
#include "zelvar/opends/OpenPanes.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/PlaceFinder.h"
#include "zelvar/opends/PlaceTravel.h"
#include "zelvar/opends/SearchPlace.h"
#include "zelvar/opends/SelectionOptions.h"
#include "zelvar/opends/ThumbnailLook.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QLineEdit>

#include <iterator>
#include <utility>

namespace zelvar {

using platform::GetDlgItem;

OpenParts::OpenParts(Setup setup) : m_setup(std::move(setup)) {
    bool const picksDocument = PicksDocument(m_setup.dlgTemplate);
    if (Has(kOpenFavorites) && m_setup.hasSources)
        m_favorites = std::make_unique<OpenFavorites>(m_setup.dialog, *this, m_setup.options, m_setup.places);
    if (Has(kOpenHistory))
        AddTravel();
    if (Has(kOpenBasket) && m_setup.takesBasket && !picksDocument)
        AddBasket();
    if (Has(kOpenDataSets))
        AddDataSets();
    if (Has(kOpenLine))
        AddForecast();
    OpenPanes const &panes = m_setup.panes;
    if (m_setup.features != kOpenPlain)
        panes.Properties()->SetOptionsRule(
            [this](DataSourceItem const &item) { return m_setup.options.TextFor(item); });
    if (Has(kOpenPreviewBar))
        panes.Properties()->AddPreviewBar();
    if (Has(kOpenConnections)) {
        panes.Items()->ShowKinds();
        panes.Folders()->ShowKinds();
        panes.Hierarchy()->ShowKinds();
        if (m_setup.hasSources && PicksImageData(m_setup.dlgTemplate))
            panes.Sources()->OfferConnections();
    }
    if (Has(kOpenThumbnails) && !picksDocument) {
        m_thumbnails = std::make_unique<ThumbnailLook>(*panes.Items(), m_setup.dialog, m_setup.key);
        m_thumbnails->SetMonikerRule(
            [this](DataSourceItem const &item) { return m_setup.options.ChosenMonikerOf(item); });
    }
    AddMenu();
}

OpenParts::~OpenParts() = default;

void OpenParts::Update() {
    if (m_travel != nullptr)
        m_travel->Update();
    if (m_search != nullptr)
        m_search->Update();
}

void OpenParts::AddTravel() {
    m_travel = std::make_unique<PlaceTravel>(
        m_setup.dialog, *m_setup.panes.Items(), m_setup.key,
        PlaceTravel::Actions{
            .show = [this](RefItemPtr<DataSourceItem> item) { m_setup.dialog.ShowItem(std::move(item)); },
            .goTo = [this](DString const &path) { m_setup.dialog.GoToDir(path, true); }});
}

// ----------------------------------------------------------------------------------------------------- the basket

void OpenParts::AddBasket() {
    m_basket =
        std::make_unique<BasketStrip>(m_setup.dialog, *GetDlgItem<OpenLine>(m_setup.dialog, kLineId),
                                      [this](DataSourceItem const &item) { return m_setup.options.MonikersOf(item); });
    if (FavoriteRows *const favorites = m_setup.panes.Sources()->OfferedFavorites(); favorites != nullptr)
        m_basket->SetFavoriteMaker([favorites](DString const &file, DString const &name) {
            favorites->Add({.kind = Favorite::Kind::Basket, .target = file, .name = name});
        });
    m_basket->Content().SetChangeHandler([this] {
        m_basket->Show();
        if (m_forecast != nullptr)
            m_forecast->SayInstead(HasGathered() ? Translated("OK opens what is in the basket") : "");
        m_setup.changed();
    });
}

bool OpenParts::HasGathered() const { return m_basket != nullptr && !m_basket->Content().IsEmpty(); }

void OpenParts::AddToBasket(ItemList const &items) {
    if (!m_setup.options.IsUpdated())
        return;
    m_setup.options.Take();
    m_basket->Add(items);
}

// ------------------------------------------------------------------------------------------------------ data sets

void OpenParts::AddDataSets() {
    auto const show = [this](RefItemPtr<DataSourceItem> item) { m_setup.dialog.ShowItem(std::move(item)); };
    m_dataSets = std::make_unique<DataSetRows>(
        DataSetRows::Actions{.listAgain = [this] { m_setup.panes.ListAgain(); }, .show = show}, Has(kOpenSeries));
    auto const rule = [this](ItemList const &roots) { return m_dataSets->FoldingOf(roots); };
    OpenPanes const &panes = m_setup.panes;
    panes.Items()->SetFoldingRule(rule);
    panes.Folders()->SetFoldingRule(rule);
    panes.Hierarchy()->SetFoldingRule(rule);
    m_named = std::make_unique<NamedData>(
        m_setup.dialog, *m_setup.fields.Places()->lineEdit(), *panes.Items(),
        NamedData::Actions{.show = show,
                           .unfold =
                               [this](DString const &folder) {
                                   m_dataSets->ShowSingly(folder);
                                   m_setup.panes.ListAgain();
                               },
                           .widen =
                               [this] {
                                   m_setup.fields.SetMask("*.*");
                                   m_setup.dialog.ApplyFileFilter("*.*", nullptr);
                               },
                           .goTo = [this](DString const &address) { m_setup.dialog.GoToDir(address, true); }});
}

DString OpenParts::NamedOptions(DString const &path) const {
    return m_named == nullptr ? DString() : m_named->OptionsOf(path);
}

void OpenParts::AddForecast() {
    auto const mask = static_cast<unsigned>(m_setup.nodeMask);
    OpenWish const wish{.image = (mask & (BDINode_Raster | BDINode_Thematic)) != 0,
                        .table = (mask & (BDINode_Thematic | BDINode_Table)) != 0};
    m_forecast = std::make_unique<OpenForecast>(
        *GetDlgItem<OpenLine>(m_setup.dialog, kLineId), *m_setup.panes.Properties(),
        OpenForecast::Setup{.wish = PicksDocument(m_setup.dlgTemplate) ? OpenWish() : wish,
                            .isSeriesOneImage = m_setup.options.GetSeriesMode() != SeriesMode::Members,
                            .optionsOf = [this](DataSourceItem const &item) { return m_setup.options.TextFor(item); },
                            .onDriverChanged = [this] { m_setup.pickedAgain(); }});
}

DriverChoices const *OpenParts::Drivers() const { return m_forecast == nullptr ? nullptr : &m_forecast->Drivers(); }

void OpenParts::ForgetSelection() {
    m_setup.panes.Properties()->Clear();
    GetDlgItem<platform::EllipsisLabel>(m_setup.dialog, kStatusId)->SetText({});
    if (m_forecast != nullptr)
        m_forecast->Select({});
}

// ----------------------------------------------------------------------------------------------------- the search

void OpenParts::AddSearch() {
    if (!Has(kOpenSearch))
        return;
    m_searchPlace = std::make_unique<SearchPlace>(m_setup.dialog, m_setup.panes);
    m_search = std::make_unique<OpenSearch>(
        m_setup.dialog, *m_setup.panes.Items(), m_setup.nodeMask,
        OpenSearch::Actions{.show = [this](RefItemPtr<DataSourceItem> const &item) { m_setup.places.Show(item); },
                            .take = [this](SearchForm &form) { m_searchPlace->TakeForm(form); },
                            .layOut = [this] { m_searchPlace->LayOut(); },
                            .forget = [this] { ForgetSelection(); }});
    m_searchPlace->AddButton(*m_search);
}

// ------------------------------------------------------------------------------------------------------- the menu

void OpenParts::AddMenu() {
    if (m_dataSets != nullptr || m_basket != nullptr || m_favorites != nullptr || Has(kOpenSearch))
        connect(m_setup.panes.Items(), &ReportView::ContextMenu, this, &OpenParts::RunItemMenu);
}

void OpenParts::RunItemMenu(QPoint screenPoint) {
    DSListCtrl &list = *m_setup.panes.Items();
    bool const isFound = list.IsShowingResults();
    ItemList roots;
    if (!isFound)
        list.GetRootItems(roots);
    ItemList picked;
    list.GetSelectedItems(picked);
    std::vector<MenuCommand> commands;
    if (isFound && picked.size() == 1)
        commands.push_back({.words = Translated("Open Containing Folder"),
                            .run = [this, item = picked.front()] { m_search->ShowFolderOf(item); }});
    if (m_basket != nullptr && !picked.empty())
        commands.push_back({.words = Translated("Add to Basket\tIns"), .run = [this, picked] { AddToBasket(picked); }});
    if (m_favorites != nullptr && !picked.empty())
        commands.push_back(
            {.words = Translated("Add to Favorites"), .run = [this, picked] { m_favorites->Add(picked); }});
    commands.push_back({.words = Translated("Copy Moniker"),
                        .run = [this, picked] { CopyMonikers(picked); },
                        .isEnabled = !picked.empty()});
    if (m_dataSets != nullptr)
        std::ranges::move(m_dataSets->CommandsFor(roots, picked), std::back_inserter(commands));
    RunMenu(list, screenPoint, commands);
}

void OpenParts::CopyMonikers(ItemList const &items) const {
    m_setup.options.Take();
    DString text;
    for (RefItemPtr<DataSourceItem> const &item : items)
        text.append(text.empty() ? "" : "\n").append(m_setup.options.MonikerOf(*item));
    QGuiApplication::clipboard()->setText(platform::ToQString(text));
}

} // namespace zelvar
