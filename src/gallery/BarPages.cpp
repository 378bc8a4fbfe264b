#include "zelvar/controls/CZelPropList.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/gallery/PageForm.h"

namespace zelvar::gallery {

namespace {

CZelProp *Group(char const *name, std::initializer_list<CZelProp *> props) {
    auto *const group = new CZelProp(name);
    for (CZelProp *const prop : props)
        group->AddSubItem(prop);
    return group;
}

/// What an application lets its users set of a layer of an image.
void FillLayer(CZelPropList &list) {
    auto *const disabled =
        new CZelProp("Pyramid levels", PropRule::Integer(0, 12), "5", "Made by the program once the file is read");
    disabled->Enable(false);
    list.AddProperty(Group(
        "Image", {
                     new CZelProp("Title", PropRule{}, "Nuclei, DAPI", "The name of the layer in the legend"),
                     new CZelProp("Size", "2048 × 2048 × 3", "Columns, rows and channels; as the file has them"),
                     new CZelProp("Source", PropRule::File(), "/data/slides/2026-03/nuclei.tif",
                                  "The file that the layer is read from"),
                     new CZelProp("Cache folder", PropRule::Folder(), "/var/tmp", "Where reduced images are kept"),
                     disabled,
                 }));
    list.AddProperty(Group(
        "Look",
        {
            new CZelProp("Visible", PropRule::Boolean(), "true", "Whether the layer is drawn at all"),
            new CZelProp("Opacity", PropRule::Integer(0, 100), "80",
                         "Per cent: 0 is invisible, 100 hides what is below"),
            new CZelProp("Gamma", PropRule::Real(0.1, 5, 2), "1.00", "Middle tones: above 1 they become brighter"),
            new CZelProp("Tint", PropRule::Color(), "#3C78D8", "The colour of the brightest value"),
            new CZelProp("Resampling", PropRule::Choice({"Nearest", "Bilinear", "Cubic", "Lanczos"}), "Cubic",
                         "How values between two pixels are found"),
        }));
    list.AddProperty(Group(
        "Notes", {new CZelProp("Comment", PropRule::MultiLine(), "Stained on Monday.\nSecond slide is out of focus.",
                               "Anything worth knowing, on as many lines as it takes")}));
}

QWidget *MakePropListPage() {
    auto *const page = new PageForm;
    auto *const list = new CZelPropList;
    list->EnableHeaderCtrl(true);
    list->SetVSDotNetLook(true);
    list->EnableDescriptionArea(true);
    list->EnableSearchBox(true);
    FillLayer(*list);
    list->SetCurSel(list->GetProperty(1)->GetSubItem(1));
    list->EnterValue(*list->GetCurSel(), "65"); // one that has been changed
    list->SetBrowse([page](CZelProp &prop, DString &value) {
        page->Say("An application would show its file dialog here, for " + prop.GetName());
        value += prop.GetRule().kind == PropRule::Kind::Folder ? "/new" : ".new";
        return true;
    });
    page->AddWide("Properties of an image layer", list, true);
    page->AddSwitch("Alphabetic", false, [list](bool on) { list->SetAlphabeticMode(on); });
    page->AddSwitch("Enabled", true, [list](bool on) { list->setEnabled(on); });
    page->AddButton("Reset all", [page, list] {
        list->ResetOriginalValues();
        page->Say("All values are the original ones");
    });
    QObject::connect(list, &CZelPropList::PropertyChanged, page, [page](CZelProp const *prop) {
        page->Say(prop->GetName() + " is " + prop->GetRule().Show(prop->GetValue()) +
                  (prop->IsModified() ? ", it was " + prop->GetRule().Show(prop->GetOriginalValue()) : " again"));
    });
    page->Say("F2 or Enter begins to edit, Escape gives up, Tab goes on");
    return page;
}

} // namespace

std::vector<Page> BarPages() {
    return {
        {"prop-list", "Property list", "CZelPropList CZelProp", MakePropListPage},
    };
}

} // namespace zelvar::gallery
