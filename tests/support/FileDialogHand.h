#pragma once

#include "support/GuiTest.h"
#include "support/Told.h"
#include "zelvar/filedlg/CCustomFileDlg.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QStringList>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QListWidget>

#include <source_location>

namespace zelvar::test {

using Paths = std::vector<std::string>;

/// A folder for a dialog; nothing may be told but what a test takes.
struct FileDialogTest : testing::Test {
    ~FileDialogTest() override { EXPECT_EQ(told.Take(), Paths{}); }
    void Write(Paths const &names) const {
        for (std::string const &name : names)
            folder.Write(name);
    }

    TempFolder folder;
    Told told;
};

inline std::vector<std::string> EntriesOf(QComboBox const &box) {
    std::vector<std::string> entries;
    for (int i = 0; i < box.count(); ++i)
        entries.push_back(box.itemText(i).toStdString());
    return entries;
}

/// A user's hand on the file dialog.
class FileDialogHand {
public:
    explicit FileDialogHand(QWidget &dialog)
        : m_dialog(dialog),
          m_list(Part<QAbstractItemView>(Part<QWidget>("listView").isVisible() ? "listView" : "treeView")),
          m_name(Part<QLineEdit>("fileNameEdit")) {}

    template <class T>
    [[nodiscard]] T &Part(char const *name) const {
        return *m_dialog.findChild<T *>(QLatin1String(name));
    }
    /// A control of the row below.
    template <class T>
    [[nodiscard]] T *Control(int id) const {
        for (QWidget *const child : m_dialog.findChildren<QWidget *>())
            if (platform::GetDlgCtrlID(*child) == id)
                return dynamic_cast<T *>(child);
        return nullptr;
    }
    [[nodiscard]] QWidget &Dialog() const { return m_dialog; }
    [[nodiscard]] QLineEdit &Name() const { return m_name; }
    [[nodiscard]] QAbstractItemView &List() const { return m_list; }

    void Type(std::string const &name) const {
        m_name.setFocus();
        m_name.selectAll();
        for (QChar const letter : platform::ToQString(name))
            QTest::sendKeyEvent(QTest::Click, &m_name, Qt::Key_unknown, QString(letter), {});
    }
    void TypeAndEnter(std::string const &name) const {
        Type(name);
        QTest::keyClick(&m_name, Qt::Key_Return);
    }
    void PressOk() const {
        for (QAbstractButton *const button : m_dialog.findChild<QDialogButtonBox *>()->buttons())
            if (static_cast<QPushButton *>(button)->isDefault() || button->text().contains(QLatin1String("pen")) ||
                button->text().contains(QLatin1String("ave")))
                return Click(button);
    }
    /// What the list shows, in byte order.
    [[nodiscard]] Paths Shown() const {
        Paths names;
        for (int row = 0; row < m_list.model()->rowCount(m_list.rootIndex()); ++row)
            names.push_back(NameAt(row));
        std::sort(names.begin(), names.end());
        return names;
    }
    void AwaitShown(Paths const &names) const {
        EXPECT_TRUE(Eventually([&] { return Shown() == names; })) << testing::PrintToString(names);
    }
    [[nodiscard]] QPoint At(std::string const &name) const {
        int row = 0;
        while (row < m_list.model()->rowCount(m_list.rootIndex()) && NameAt(row) != name)
            ++row;
        EXPECT_NE(NameAt(row), "") << name << " is not shown";
        m_list.scrollTo(Cell(row));
        return m_list.visualRect(Cell(row)).center();
    }
    void ClickRow(std::string const &name, Qt::KeyboardModifiers modifiers = {}) const {
        EXPECT_TRUE(Eventually([&] { return std::ranges::count(Shown(), name) == 1; }));
        QTest::mouseClick(m_list.viewport(), Qt::LeftButton, modifiers, At(name));
    }
    void DoubleClickRow(std::string const &name) const {
        ClickRow(name);
        QTest::mouseDClick(m_list.viewport(), Qt::LeftButton, {}, At(name));
    }

private:
    [[nodiscard]] QModelIndex Cell(int row) const { return m_list.model()->index(row, 0, m_list.rootIndex()); }
    [[nodiscard]] std::string NameAt(int row) const { return Cell(row).data().toString().toStdString(); }

    QWidget &m_dialog;
    QAbstractItemView &m_list;
    QLineEdit &m_name;
};

/// Chooses the only name that is no text with the keyboard.
inline void ChooseUndecoded(FileDialogHand const &hand) {
    auto &names = hand.Part<QListWidget>("undecodedNames");
    EXPECT_TRUE(Eventually([&] { return names.isVisible() && names.count() == 1; }));
    EXPECT_EQ(names.height(), names.sizeHintForRow(0) + 2 * names.frameWidth()) << "as high as its only name";
    names.setFocus();
    QTest::keyClick(&names, Qt::Key_Down);
    Shot(hand.Dialog(), "file-undecoded");
    QTest::keyClick(&names, Qt::Key_Return);
}

/// Runs the dialog while `act` works with it; the paths chosen, none when cancelled.
inline Paths RunWith(CCustomFileDlg &dialog, std::function<void(FileDialogHand const &)> const &act) {
    auto const done = test::OnNextDialog([&act](QWidget &window) { act(FileDialogHand(window)); });
    int const answer = dialog.DoModal();
    EXPECT_TRUE(*done);
    Paths paths;
    for (std::size_t at = dialog.GetStartPosition(); at != 0;)
        paths.push_back(dialog.GetNextPathName(at));
    EXPECT_EQ(answer, paths.empty() ? 2 : 1);
    return paths;
}
inline void ExpectPicked(CCustomFileDlg &dialog, Paths const &paths,
                         std::function<void(FileDialogHand const &)> const &act,
                         std::source_location at = std::source_location::current()) {
    testing::ScopedTrace const trace(at.file_name(), static_cast<int>(at.line()), "");
    EXPECT_EQ(RunWith(dialog, act), paths);
}

} // namespace zelvar::test
