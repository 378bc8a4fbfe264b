#pragma once

#include "zelvar/opends/search/SearchDraft.h"

#include <QtWidgets/QWidget>

#include <vector>

class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;

namespace zelvar {

class FactsForm;
namespace platform {
class EllipsisLabel;
}

/// The bar of a search: a name, a button that searches or stops, the facts behind another button, and a line that says
/// how far it has come. User-interface thread.
class SearchForm : public QWidget {
    Q_OBJECT

public:
    explicit SearchForm(QWidget *parent = nullptr);

    /// "Search below ..."; the name in words for the user.
    void SetPlace(DString const &name);
    [[nodiscard]] SearchDraft Draft() const;
    void SetName(DString const &name);
    void SetDraft(SearchDraft const &draft); ///< shows the facts if there are any
    /// The button stops while something is searched.
    void ShowSearching(bool isSearching);
    /// Empty takes the line away.
    void ShowLine(DString const &words);
    /// Says what is wrong and goes there.
    void ShowFault(SearchDraft::Fault const &fault);
    void FocusOnName();

    /// Pixels that it wants at that width, at most `most`: the facts scroll where they have less.
    [[nodiscard]] int HeightFor(int width, int most);
    /// What can have the focus, in the order of the bar.
    [[nodiscard]] std::vector<QWidget *> FocusOrder() const;

    [[nodiscard]] QLineEdit *Name() const { return m_name; }
    [[nodiscard]] QPushButton *FactsButton() const { return m_factsButton; }
    [[nodiscard]] QPushButton *SearchButton() const { return m_searchButton; }
    [[nodiscard]] QPushButton *CloseButton() const { return m_closeButton; }
    [[nodiscard]] FactsForm *Facts() const { return m_facts; }
    [[nodiscard]] platform::EllipsisLabel *Line() const { return m_line; }

Q_SIGNALS:
    /// The button was pressed: search, or stop.
    void SearchPressed();
    void ClosePressed();
    /// It wants another height now.
    void HeightChanged();

private:
    [[nodiscard]] QPushButton *AddButton(char const *words, char const *tip, char const *name);
    void ShowFacts(bool isShown);

    QLineEdit *m_name; ///< children
    QPushButton *m_factsButton;
    QPushButton *m_searchButton;
    QPushButton *m_closeButton;
    QScrollArea *m_area;
    FactsForm *m_facts;
    platform::EllipsisLabel *m_line;
};

} // namespace zelvar
