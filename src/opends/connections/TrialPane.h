#pragma once

#include "zelvar/connections/ConnectionTrial.h"

#include <QtWidgets/QWidget>

class QLabel;

namespace zelvar {

class CZelListCtrl;

/// What trying a connection has shown: a list of its steps, and below it all words of the one that is selected. Ctrl+C
/// copies the whole. User-interface thread.
class TrialPane : public QWidget {
    Q_OBJECT

public:
    explicit TrialPane(QWidget *parent = nullptr);

    /// Empties the list, with words on what is to be seen in it.
    void Clear(char const *words);
    void Add(TrialResult const &result); ///< and selects it
    [[nodiscard]] std::vector<TrialResult> const &Results() const { return m_results; }
    void SayBelow(DString const &words);
    /// A line a step: step, outcome, milliseconds, words.
    [[nodiscard]] DString Text() const;
    [[nodiscard]] CZelListCtrl *List() const { return m_list; }
    [[nodiscard]] QLabel *Words() const { return m_words; }

protected:
    void showEvent(QShowEvent *event) override;

private:
    [[nodiscard]] int WidthOf(std::vector<QString> const &words) const; ///< of a column with them
    void Copy() const;
    void RunMenu(QPoint screenPoint);
    void ShowSelected();

    std::vector<TrialResult> m_results;
    CZelListCtrl *m_list; ///< children
    QLabel *m_words;
};

/// "works", "failed", "stopped", in the user's language.
[[nodiscard]] char const *TrialStateInWords(TrialState state);

} // namespace zelvar
