#pragma once

#include "zelvar/connections/ConnectionTrial.h"

#include <QtWidgets/QWidget>

class QLabel;
class QPushButton;

namespace zelvar {

class CZelListCtrl;

/// What trying a connection has shown: a list of its steps, and below it all words of the one that is selected, with a
/// button for what would let a step go on that has failed. Ctrl+C copies the whole. User-interface thread.
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
    /// "Accept This Certificate", "Allow cdn.lab:443"; hidden while the last step offers neither.
    [[nodiscard]] QPushButton *OfferButton() const { return m_offer; }

Q_SIGNALS:
    void CertificateAccepted(DString const &fingerprint);
    void HostAllowed(DString const &host); ///< "cdn.lab:443"

protected:
    void showEvent(QShowEvent *event) override;

private:
    [[nodiscard]] int WidthOf(std::vector<QString> const &words) const; ///< of a column with them
    void Copy() const;
    void RunMenu(QPoint screenPoint);
    void ShowSelected();
    void ShowOffer();
    void TakeOffer();

    std::vector<TrialResult> m_results;
    CZelListCtrl *m_list; ///< children
    QLabel *m_words;
    QPushButton *m_offer;
};

/// "works", "failed", "stopped", in the user's language.
[[nodiscard]] char const *TrialStateInWords(TrialState state);

} // namespace zelvar
