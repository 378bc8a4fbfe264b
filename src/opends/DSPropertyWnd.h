#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"
#include "zelvar/controls/CZelTabCtrl.h"
#include "zelvar/data/options/DriverOption.h"
#include "zelvar/model/DataSourceExtras.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/ItemProperties.h"
#include "zelvar/platform/ui/MessageTarget.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <QtCore/QPointer>
#include <QtCore/QTimer>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace zelvar {

class CZelPropList;
struct OpenFacts;
struct OpenSubject;
struct OpenWish;
class ImageExtraWnd;
class ImagePreviewWnd;
class PreviewBar;
class PropertyWorker;

/// Property pane: tabs with a preview, the properties and the import options of the item picked last.
///
/// All reading happens on a worker thread. The pane knows its coordinator only as its parent and two message numbers.
/// User-interface thread.
class ZELVAR_API DSPropertyWnd : public CZelTabCtrl {
    Q_OBJECT

public:
    explicit DSPropertyWnd(QWidget *parent = nullptr);
    ~DSPropertyWnd() override;

    /// Makes the tabs for the purpose of the dialog. Once; 0 on success.
    int Create(Rect const &rect, DLGTemplate dlgTemplate, QWidget *parent, unsigned id);
    /// Numbers of the messages that are posted to the coordinator; 0 tells nobody.
    void SetOptChangedMsg(platform::MessageId message) { m_optChangedMsg = message; }
    void SetFltrChangedMsg(platform::MessageId message) { m_fltrChangedMsg = message; }
    void SetCoordinator(QObject *coordinator) { m_coordinator = coordinator; }

    /// Starts reading the item; returns at once. What is shown already is not read again. `format` may be null.
    void ShowProps(RefItemPtr<DataSourceItem> item, char const *format);
    /// Shows the option page of `extras`, or hides the tab when it is null.
    void UpdateExtras(RefItemPtr<DataSourceItem> const &item, DataSourceExtras::Item *extras);
    /// Shows a page of a driver's options with these values, or hides the tab where it has none. The tab stays where it
    /// is: who looks through files wants to see them.
    void ShowDriverOptions(DString const &driverId, std::vector<DriverOption> const &options,
                           std::map<DString, DString> const &values);
    /// Reads the option values from the page, if it is shown.
    void ApplyOptions();
    /// The option text last read.
    [[nodiscard]] DString GetOptionString() const;
    /// Ends what is under way, without waiting, and empties the pane.
    void Clear();

    /// Puts a bar below the preview: what of an image it shows, and its values. Once, before the first item; not where
    /// documents are picked.
    void AddPreviewBar();

    /// What the names of all tabs take side by side, pixels.
    [[nodiscard]] int WidthOfTabs() const;
    [[nodiscard]] ImagePreviewWnd *Preview() const { return m_previewWnd; }
    [[nodiscard]] PreviewBar *Bar() const { return m_bar; } ///< null without it
    [[nodiscard]] ImageExtraWnd *Extra() const { return m_extraWnd; }
    [[nodiscard]] CZelPropList *Properties() const { return m_propList; }
    /// Told after an item has turned out to be something else than its listing took it for. User-interface thread.
    void SetClassifiedHandler(std::function<void()> handler) { m_onClassified = std::move(handler); }
    /// Told what opening the item has shown, with its properties and again with its picture. What is wished for of the
    /// items is said before the first of them is shown.
    using FactsHandler = std::function<void(OpenSubject const &, OpenFacts const &)>;
    void SetFactsHandler(OpenWish const &wish, FactsHandler handler);
    /// What an item is opened with, in place of the option page's text.
    void SetOptionsRule(std::function<DString(DataSourceItem const &)> rule) { m_optionsOf = std::move(rule); }
    /// Tells the handlers at once what the worker has found, where its messages wait.
    void TakeFacts();
    /// Whether the worker has found something that was not told yet.
    [[nodiscard]] bool HasFacts() const;
    /// True while the worker reads.
    [[nodiscard]] bool IsReading() const;
    /// The same, as soon as it does not, or when the time is over.
    [[nodiscard]] bool IsReading(std::chrono::milliseconds wait) const;

protected:
    bool event(QEvent *event) override;

private:
    void OnCanvasReady(platform::MessageParam first);
    void OnPropsReady();
    void OnApplyOptions();
    void OnApplyFilter();
    void AddProps();
    void ClearWnd(int mode);
    void OnChosen();
    void UpdateProperties();
    [[nodiscard]] bool AreOptionsShown() const;
    void Tell(platform::MessageId message);

    platform::MessageMap m_messages;
    platform::MessageTarget m_target;
    ImagePreviewWnd *m_previewWnd = nullptr; ///< a child; null where documents are picked
    ImageExtraWnd *m_extraWnd = nullptr;     ///< likewise
    CZelPropList *m_propList = nullptr;      ///< a child
    PreviewBar *m_bar = nullptr;             ///< likewise
    QTimer *m_patience = nullptr;            ///< likewise; how long the picture before stands for the one that is read
    PropertyMap m_props;
    std::function<void()> m_onClassified;
    FactsHandler m_onFacts;
    std::function<DString(DataSourceItem const &)> m_optionsOf;
    bool m_closing = false; ///< set by `Clear`: results that come until the next job are dropped
    DLGTemplate m_dlgTemplate = DT_DATA;
    int m_optionsTab = -1; ///< below 0 for none
    platform::MessageId m_optChangedMsg = 0;
    platform::MessageId m_fltrChangedMsg = 0;
    QPointer<QObject> m_coordinator; ///< the parent without one
    DString m_shownPath;             ///< the key of the last job, with the two below
    DString m_shownOptions;
    DString m_shownFormat;
    std::shared_ptr<PropertyWorker> m_worker;
};

} // namespace zelvar
