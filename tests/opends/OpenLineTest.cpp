#include "zelvar/opends/OpenLine.h"

#include "support/ImageFiles.h"
#include "support/OpenDialogHand.h"
#include "support/RealDrivers.h"
#include "support/Told.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/data/BDIDrvr.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/opends/OpenForecast.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QMessageBox>

namespace zelvar::test {
namespace {

using platform::GetDlgItem;
using testing::StartsWith;

struct OpenLines : testing::Test {
    OpenLines() {
        UseRealDrivers();
        WriteImage(folder / "grey.tif");
        WriteImage(folder / "rgb.tif", {.width = 32, .channels = 3});
        folder.Write("notes.txt", "no image");
    }
    ~OpenLines() override { EXPECT_THAT(told.Take(), IsEmpty()); }

    DialogPtr Make(unsigned features = kOpenAll, unsigned mask = BDINode_Raster,
                   SeriesMode mode = SeriesMode::Members) {
        DlgOpenDS::SetFeatures(features);
        DialogPtr dialog(DlgOpenDS::CreateDialogObject({&all}, &all, DT_DATA, nullptr, nullptr));
        dialog->SetBDIFilter(static_cast<int>(mask));
        dialog->SetInitDir(folder.Path().c_str());
        dialog->SetSeriesMode(mode);
        return dialog;
    }
    static int Run(DlgOpenDS &dialog, DString const &awaited, std::function<void()> const &act) {
        return RunWhen(
            dialog, [&] { return dialog.MainList() != nullptr && RowOf(*dialog.MainList(), awaited) >= 0; }, act);
    }
    static void Select(DlgOpenDS &dialog, std::vector<DString> const &names) {
        dialog.MainList()->ClearSelection();
        for (DString const &name : names)
            dialog.MainList()->SetSlct(RowOf(*dialog.MainList(), name), true);
    }
    static platform::EllipsisLabel &Label(DlgOpenDS &dialog) { return *GetDlgItem<OpenLine>(dialog, kLineId)->Label(); }
    /// The line, once there is no more to know.
    static std::string LineFor(DlgOpenDS &dialog, std::vector<DString> const &names) {
        Select(dialog, names);
        QCoreApplication::processEvents(); // the list has told the dialog
        EXPECT_TRUE(Eventually([&] { return dialog.Forecast()->IsSettled(); }));
        QCoreApplication::processEvents();
        return Label(dialog).Text().toStdString();
    }
    static bool IsMarked(DlgOpenDS &dialog) { return !dialog.Forecast()->Outcome().isUsable; }

    TempFolder folder;
    Told told;
    DFileFrmt all{"", "All Files (*.*)", "*.*"};
};

TEST_F(OpenLines, SayWhatOkWillDoWithWhatIsSelected) {
    DialogPtr const dialog = Make();
    Run(*dialog, "notes.txt", [&] {
        EXPECT_EQ(LineFor(*dialog, {"grey.tif"}), "GeoTIFF: 64 x 48, 1 channel, 8 bit unsigned, 3.0 KB in memory");
        EXPECT_FALSE(IsMarked(*dialog));
        EXPECT_EQ(Label(*dialog).accessibleName(), "What OK will do");
        EXPECT_EQ(Label(*dialog).accessibleDescription(), Label(*dialog).Text());
        EXPECT_EQ(LineFor(*dialog, {"grey.tif", "rgb.tif"}),
                  "2 items: 7.5 KB in memory; different sizes (64 x 48, 32 x 48); different channels (1, 3)");
        EXPECT_THAT(LineFor(*dialog, {"notes.txt"}), StartsWith("cannot be opened: "));
        EXPECT_TRUE(IsMarked(*dialog));
        Shot(*dialog, "DlgOpenDS-unusable");
        EXPECT_THAT(LineFor(*dialog, {"grey.tif", "notes.txt"}), HasSubstr("cannot be opened: notes.txt ("));
        EXPECT_EQ(LineFor(*dialog, {"rgb.tif"}), "GeoTIFF: 32 x 48, 3 channels, 8 bit unsigned, 4.5 KB in memory");
        dialog->MainList()->ClearSelection();
        EXPECT_TRUE(Eventually([&] { return Label(*dialog).Text().isEmpty(); })) << "nothing is selected";
        EXPECT_EQ(LineFor(*dialog, {"rgb.tif"}), "GeoTIFF: 32 x 48, 3 channels, 8 bit unsigned, 4.5 KB in memory")
            << "the pane has not read it again";
    });
}

TEST_F(OpenLines, AreOfTheKindOfDataThatIsPicked) {
    folder.Write("cells.csv", "name,area\na,1\n");
    std::pair<unsigned, char const *> const rows[] = {{BDINode_Table, "Comma Separated Value"}, {0, "14 B"}};
    for (auto const &[mask, line] : rows) {
        DialogPtr const dialog = Make(kOpenAll, mask);
        Run(*dialog, "cells.csv", [&, line = line] {
            EXPECT_THAT(LineFor(*dialog, {"cells.csv"}), StartsWith(line));
            EXPECT_FALSE(IsMarked(*dialog));
        });
    }
}

TEST_F(OpenLines, TellOfASeriesWhatItsFilesDifferIn) {
    for (int i = 1; i <= 11; ++i)
        WriteImage(folder / Format("s%02d.tif", i), {.width = i == 3 ? 9 : 8, .height = 4});
    for (auto const &[mode, isMarked] : {std::pair(SeriesMode::Slices, true), std::pair(SeriesMode::Members, false)}) {
        DialogPtr const dialog = Make(kOpenAll, BDINode_Raster, mode);
        Run(*dialog, "s[01-11].tif", [&, isMarked = isMarked] {
            EXPECT_THAT(LineFor(*dialog, {"s[01-11].tif"}), HasSubstr("s03.tif is 9 x 4, the others are 8 x 4"));
            EXPECT_EQ(IsMarked(*dialog), isMarked);
        });
    }
}

TEST_F(OpenLines, LetOkAskOnceAboutWhatIsNotUsable) {
    EXPECT_EQ(ShownReason("a\u202Eb\n\nc\x1B"), "a\\u202Eb\n\nc\\x1B");
    DString const odd = "odd\u202E.txt"; // turns what stands behind it
    folder.Write(odd, "text");
    for (auto const answer : {QMessageBox::No, QMessageBox::Yes}) {
        DialogPtr const dialog = Make();
        int const result = Run(*dialog, "notes.txt", [&] {
            auto *const ok = GetDlgItem<QPushButton>(*dialog, kOkId);
            Select(*dialog, {"grey.tif"});
            ASSERT_TRUE(Eventually([&] { return ok->isEnabled(); }));
            Select(*dialog, {odd}); // and at once, before anything is known of it
            auto const asked = OnNextDialog([&](QWidget &question) {
                auto &box = dynamic_cast<QMessageBox &>(question);
                EXPECT_THAT(box.text().toStdString(), StartsWith("odd\\u202E.txt: cannot be opened: "));
                EXPECT_EQ(box.defaultButton(), box.button(QMessageBox::No));
                Click(box.button(answer));
            });
            Click(ok);
            EXPECT_TRUE(*asked);
            EXPECT_EQ(dialog->isVisible(), answer == QMessageBox::No);
        });
        EXPECT_EQ(result == QDialog::Accepted, answer == QMessageBox::Yes);
        EXPECT_EQ(dialog->GetSelectedNodePaths().size(), answer == QMessageBox::Yes ? 1U : 0U);
    }
    DialogPtr const dialog = Make();
    EXPECT_EQ(Run(*dialog, "grey.tif",
                  [&] {
                      Select(*dialog, {"grey.tif", "rgb.tif"});
                      PressOk(*dialog);
                      EXPECT_FALSE(dialog->isVisible()) << "nobody is asked";
                  }),
              QDialog::Accepted);
}

TEST_F(OpenLines, OfferTheDriversThatReadAFileAndKeepTheChoiceByExtension) {
    char const header[] = "ENVI\nsamples = 4\nlines = 5\nbands = 1\ndata type = 1\ninterleave = bsq\n";
    WriteImage(folder / "both.TIF");
    folder.Write("both.hdr", header);
    WriteImage(folder / "next.tif");
    folder.Write("next.hdr", header);
    std::string const asTiff = "GeoTIFF: 64 x 48, 1 channel, 8 bit unsigned, 3.0 KB in memory";
    std::string const asEnvi = "ENVI .hdr Labelled: 4 x 5, 1 channel, 8 bit unsigned, 20 B in memory";
    DialogPtr const dialog = Make();
    Run(*dialog, "next.tif", [&] {
        CZelComboBox &drivers = *GetDlgItem<OpenLine>(*dialog, kLineId)->Drivers();
        EXPECT_EQ(LineFor(*dialog, {"grey.tif"}), asTiff);
        EXPECT_FALSE(drivers.isVisible()) << "there is nothing to choose";
        EXPECT_EQ(LineFor(*dialog, {"both.TIF"}), asTiff);
        ASSERT_TRUE(drivers.isVisible());
        ASSERT_EQ(drivers.GetCount(), 2);
        EXPECT_EQ(drivers.GetLBText(0) + drivers.GetLBText(1), "GTiffENVI");
        dialog->MainList()->setFocus();
        QTest::keyClick(dialog->MainList(), Qt::Key_Tab);
        EXPECT_TRUE(drivers.hasFocus());
        Shot(*dialog, "DlgOpenDS-drivers");
        QTest::keyClick(&drivers, Qt::Key_Down);
        EXPECT_TRUE(Eventually([&] { return Label(*dialog).Text().toStdString() == asEnvi; }));
        EXPECT_EQ(LineFor(*dialog, {"next.tif"}), asEnvi) << "others of that extension follow";
        EXPECT_EQ(LineFor(*dialog, {"grey.tif"}), asTiff) << "but for those that it does not read";
        EXPECT_EQ(LineFor(*dialog, {"both.TIF"}), asEnvi);
        PressOk(*dialog);
    });
    ASSERT_EQ(dialog->GetSelectedNodePaths().size(), 1U);
    BDIMoniker const moniker = dialog->GetSelectedNodePaths()[0];
    EXPECT_EQ(moniker.GetText(), folder / "both.TIF?DRIVER=ENVI");
    ASSERT_NE(moniker.GetDrvr(), nullptr);
    EXPECT_EQ(moniker.GetDrvr()->GetId(), "ENVI");

    DialogPtr const later = Make();
    Run(*later, "next.tif", [&] {
        EXPECT_EQ(LineFor(*later, {"both.TIF", "grey.tif"}),
                  "2 items: 3.0 KB in memory; different sizes (4 x 5, 64 x 48)");
        EXPECT_EQ(LineFor(*later, {"next.tif"}), asEnvi);
        CZelComboBox &drivers = *GetDlgItem<OpenLine>(*later, kLineId)->Drivers();
        ASSERT_EQ(drivers.GetCurSel(), 1);
        QTest::keyClick(&drivers, Qt::Key_Up);
        EXPECT_TRUE(Eventually([&] { return Label(*later).Text().toStdString() == asTiff; }));
        EXPECT_TRUE(Eventually([&] { return later->Forecast()->IsSettled(); }));
        EXPECT_TRUE(drivers.isVisible()) << "one can go back";
        PressOk(*later);
    });
    ASSERT_EQ(later->GetSelectedNodePaths().size(), 1U);
    EXPECT_EQ(later->GetSelectedNodePaths()[0].GetText(), folder / "next.tif");
}

TEST_F(OpenLines, AreAbsentUnlessTheyAreWanted) {
    std::map<int, QRect> places[2];
    for (unsigned const features : {unsigned{kOpenPlain}, unsigned{kOpenLine}}) {
        DialogPtr const dialog = Make(features);
        Run(*dialog, "grey.tif", [&] {
            bool const isWanted = features == kOpenLine;
            EXPECT_EQ(dialog->Forecast() != nullptr, isWanted);
            EXPECT_EQ(GetDlgItem(*dialog, kLineId) != nullptr, isWanted);
            for (platform::DialogItem const &item : kOpenDialogTemplate.items)
                places[isWanted ? 1 : 0][item.id] = GetDlgItem(*dialog, item.id)->geometry();
            if (!isWanted)
                return;
            QRect const line = GetDlgItem(*dialog, kLineId)->geometry();
            EXPECT_GT(line.top(), places[1][kSplitterPlaceId].bottom());
            EXPECT_LE(line.bottom(), places[0][kSplitterPlaceId].bottom() + 1) << "it takes its place from the panes";
            EXPECT_GE(line.height(), Label(*dialog).fontMetrics().height());
            places[1][kSplitterPlaceId] = places[0][kSplitterPlaceId];
        });
    }
    EXPECT_EQ(places[0], places[1]) << "all else stays where it is";
}

} // namespace
} // namespace zelvar::test
