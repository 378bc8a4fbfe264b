#pragma once

#include "zelvar/base/DString.h"

#include <memory>
#include <vector>

class QAbstractButton;
class QDialog;

namespace zelvar::tool {

/// A user's hand on one dialog that is up: what a script can do with it, and see of it.
class DialogHand {
public:
    virtual ~DialogHand() = default;
    DialogHand(DialogHand const &) = delete;
    DialogHand &operator=(DialogHand const &) = delete;

    /// The dialog can be worked.
    [[nodiscard]] virtual bool IsReady() const { return true; }
    /// One item only can be picked from now on.
    virtual void AllowOneOnly() {}
    /// Those of the names that are this dialog's to pick; the others are for one that follows it.
    [[nodiscard]] virtual std::vector<DString> OwnNames(std::vector<DString> const &names) const { return names; }
    /// Picks the items of these names; false, and nothing picked, while one of them is not there.
    virtual bool Select(std::vector<DString> const &names) = 0;
    /// They still are: a list that goes on being filled may have forgotten them.
    [[nodiscard]] virtual bool ArePicked(std::vector<DString> const &names) const {
        static_cast<void>(names);
        return true;
    }
    [[nodiscard]] virtual QAbstractButton *OkButton() const = 0;
    /// What is picked is shown with all that belongs to it.
    [[nodiscard]] virtual bool IsSettled() const { return true; }
    /// It is known what OK would do.
    [[nodiscard]] virtual bool IsForeseen() const { return true; }

protected:
    DialogHand() = default;
};

/// The hand for a dialog; null for a question or another dialog that a script does not work.
[[nodiscard]] std::unique_ptr<DialogHand> HandFor(QDialog &dialog);

} // namespace zelvar::tool
