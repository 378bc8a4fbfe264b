#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/thematic/TmtcListCtrl.h"

#include <QtWidgets/QScrollArea>

namespace zelvar::gallery {

namespace {

enum Icons : int { kRuleIcon = 7001, kExportIcon = 7002 };

/// A list that makes what its buttons ask for.
class PlayList : public TmtcListCtrl {
public:
    PlayList() {
        SetKeyboardControl(true);
        CZelImageList::RegisterIcon(kRuleIcon, "text-x-script", "table");
        CZelImageList::RegisterIcon(kExportIcon, "document-save", "file");
        auto *const rules = Group::Create(Translated("Rule"), "rules", Rgb(20, 60, 140), Rgb(120, 170, 240), kRuleIcon);
        for (char const *name : {Translated("Segment the nuclei"), Translated("Merge neighbours of like colour"),
                                 Translated("Measure area and shape")})
            rules->AddTail(Item::Create(name, kRuleIcon, 0, true));
        rules->AddTail(Item::Create(Translated("Read only"), kRuleIcon, 0, false));
        AddTail(rules);
        AddTail(Group::Create(Translated("Export"), "exports", Rgb(20, 110, 40), Rgb(130, 220, 140), kExportIcon));
        auto *const fixed =
            Group::Create(Translated("Import"), "imports", Rgb(120, 90, 20), Rgb(240, 210, 130), kExportIcon);
        fixed->SetEnblAdd(false);
        AddTail(fixed);
        AddTail(Item::Create(Translated("An item of its own"), kExportIcon, 0, true));
    }
    Item *OnAddToGroup(Group *group) override {
        Item *const item = Item::Create(Format("%s %d", group->GetText().c_str(), ++m_made),
                                        static_cast<int>(group->GetData()), 0, true);
        group->AddTail(item);
        FitHeight();
        return item;
    }
    void OnRmvItem(Group *group, Item *item) override {
        TmtcListCtrl::OnRmvItem(group, item);
        FitHeight();
    }

private:
    void FitHeight() { setMinimumHeight(GetContentHeight()); }
    int m_made = 0;
};

QWidget *MakeThematicPage() {
    auto *const area = new QScrollArea;
    auto *const list = new PlayList;
    list->setMinimumHeight(list->GetContentHeight());
    list->setAccessibleName(platform::Shown("Rules and exports"));
    area->setWidget(list);
    area->setFocusPolicy(Qt::NoFocus); // the list has it, and leaves it the keys that scroll
    area->setWidgetResizable(true);
    return area;
}

} // namespace

std::vector<Page> ThematicPages() {
    return {{"thematic", Mark("Thematic list"),
             "TmtcListCtrl ThematicGroup ThematicItem ThematicElement ThematicText ThematicBitmap ThematicButton "
             "ThematicBitmapButton ThematicHyperlink",
             MakeThematicPage}};
}

} // namespace zelvar::gallery
