#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/opends/DriverChoices.h"
#include "zelvar/opends/OpenFactsReading.h"
#include "zelvar/platform/ui/MessageTarget.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>
#include <list>
#include <memory>
#include <vector>

namespace zelvar {

class DSPropertyWnd;
class FactsFinder;
class OpenLine;

/// Knows what OK will do with what is selected in the open dialog, and says so in its line.
///
/// Of the item picked last it hears from the property pane, which reads it anyway. Further ones are looked at once the
/// pane has its picture, for two seconds. No selection waits for any of it. User-interface thread.
class ZELVAR_API OpenForecast : public QObject {
    Q_OBJECT

public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    struct Setup {
        OpenWish wish{};
        bool isSeriesOneImage = false;                              ///< else it is given file by file
        std::function<DString(DataSourceItem const &)> optionsOf{}; ///< what an item is opened with
        std::function<void()> onDriverChanged{}; ///< what is selected is opened with another driver from now on
    };
    /// The windows must outlive it.
    OpenForecast(OpenLine &line, DSPropertyWnd &pane, Setup setup);
    ~OpenForecast() override;

    /// What is selected now; the pane has been given the last of it.
    void Select(ItemList const &items);
    /// Nothing is selected, and why there may be nothing to select in the place of that name; not set where all was
    /// listed.
    void SayUnlisted(DString const &place, DError const &why);
    /// While the text is not empty the line says that, whatever is selected.
    void SayInstead(DString text);
    [[nodiscard]] OpenOutcome const &Outcome() const { return m_outcome; }
    /// Which driver opens what.
    [[nodiscard]] DriverChoices const &Drivers() const { return m_choices; }
    /// Nothing more will be known of what is selected.
    [[nodiscard]] bool IsSettled() const;
    /// Whether OK may take it: waits a moment for what is not known yet, and asks about what is not usable. False, too,
    /// if the user ends the wait.
    [[nodiscard]] bool MayAccept(QWidget &dialog);
    /// Something that is not selected.
    struct Gathered {
        DString name{};
        OpenSubject subject{};
        std::int64_t bytes = -1; ///< of its file; -1 if nobody knows
    };
    /// The same for what was gathered in place of what is selected.
    [[nodiscard]] bool MayAccept(QWidget &dialog, std::vector<Gathered> const &gathered) const;
    /// Name of the window that asks.
    static constexpr char kQuestion[] = "openAnyway";

protected:
    bool event(QEvent *event) override;

private:
    struct Item {
        OpenSubject subject{};
        OpenFacts facts{};
        bool isKnown = false;
    };
    static const platform::MessageId kFoundMessage;
    void OnFacts(OpenSubject const &subject, OpenFacts const &facts);
    void OnFound();
    void LookOn();
    void Update();
    void UpdateDrivers();
    void OnDriverChosen(int index);
    /// Whether it is to be opened without the driver that others of its kind have.
    [[nodiscard]] bool IsGivenUp(OpenSubject const &subject, OpenFacts const &facts);
    void SetOutcome(OpenOutcome outcome);
    /// What the properties tell of all of it, as far as there is time.
    [[nodiscard]] bool IsKnown() const;
    /// False if the user ended it.
    [[nodiscard]] bool WaitForFacts();
    [[nodiscard]] static bool Ask(QWidget &dialog, DString const &said, DString const &reason);
    [[nodiscard]] Item NewItem(DataSourceItem const &item) const;
    static void Fill(Item &item, OpenFacts facts);

    platform::MessageMap m_messages;
    platform::MessageTarget m_target;
    OpenLine &m_line;
    DSPropertyWnd &m_pane;
    Setup m_setup;
    std::uint64_t const m_memory;
    std::shared_ptr<FactsFinder> m_finder;
    std::vector<Item> m_items;        ///< the first of those selected
    std::uint64_t m_selected = 0;     ///< all of them
    std::vector<std::size_t> m_asked; ///< those that the finder has not told yet, in its order
    bool m_isAsked = false;           ///< the finder was given what it can look at
    OpenSubject m_shown;              ///< what the pane told of last
    OpenFacts m_shownFacts;
    DriverChoices m_choices;
    DString m_driversOf; ///< the path whose drivers are to be chosen from
    QTimer m_idle;       ///< until the pane has read
    QTimer m_slow;       ///< until the user is told that something is read
    OpenOutcome m_outcome;
    DString m_instead;
};

} // namespace zelvar
