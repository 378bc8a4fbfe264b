#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DString.h"
#include "zelvar/base/ImageList.h"
#include "zelvar/base/RefItem.h"
#include "zelvar/base/SystemTime.h"
#include "zelvar/model/DLGTemplate.h"

#include <memory>
#include <system_error>

namespace zelvar {

class DataSourceItemItr;

/// Browsable item: a drive, folder, file, container, connection, or a folder or image inside one.
///
/// Identity across panes is `GetPath()`. Shared by count; made by the factories of the concrete classes; the creating
/// thread gives an item up when it hands it over. Failure is silent: null, empty, false.
class ZELVAR_API DataSourceItem : public RefItem {
public:
    /// What kind of source an item belongs to; handed on to the application.
    enum DataSourceType { DST_UNKNOWN = 0, DST_FILE_SYSTEM = 1, DST_REPOSITORY = 2, DST_NONE = 3 };

    /// Stop signal, polled by iterators between children, on the thread that lists.
    struct ICancel {
        virtual ~ICancel() = default;
        [[nodiscard]] virtual bool IsCanceled() = 0;
    };

    virtual void SetName(DString const &name) = 0;
    [[nodiscard]] virtual DString GetName() const = 0; ///< what the user sees
    [[nodiscard]] virtual DString GetPath() const = 0; ///< what identifies the item to the outside
    [[nodiscard]] virtual DString GetRDIDriverId() const { return {}; }
    [[nodiscard]] virtual DString GetBDIDriverId() const { return {}; }
    /// Lists the children on the calling thread before it returns; may block as the source does. Null if the item has
    /// none to list. Arguments may be null or empty; each class uses some of them. To be given back through
    /// `DeleteIterator` of the same item.
    virtual DataSourceItemItr *CreateIterator(ICancel *cancel, char const *filter, char const *driverId, int nodeMask,
                                              DLGTemplate dlgTemplate) = 0;
    virtual void DeleteIterator(DataSourceItemItr *itr) = 0;
    virtual RefItemPtr<DataSourceItem> GetParent() = 0;
    virtual RefItemPtr<DataSourceItem> Clone() = 0;
    [[nodiscard]] virtual bool IsFolder() const = 0; ///< can be entered
    /// Can be picked. For driver nodes: has a bit of `mask`, or any data bit with mask 0.
    [[nodiscard]] virtual bool IsFile(int mask) const;
    [[nodiscard]] virtual int GetIconIndex() const { return m_iconIndex; } ///< below 0 for no picture
    [[nodiscard]] virtual HIMAGELIST GetImageList() const { return m_hImageList; }
    /// Opens what opens late. User-interface thread; may block.
    virtual void Prepare() {}
    virtual bool ResetFilter(char const *filter);
    virtual bool IsFilterSupported() { return false; }
    /// The driver's filters, one configuration a line.
    virtual DString GetFilterConf() { return {}; }
    [[nodiscard]] virtual DataSourceType GetDataSourceType() const = 0;
    virtual void ReservedHook() {} ///< holds its place in the order; nothing calls it
    [[nodiscard]] virtual std::int64_t GetFileSize() const { return -1; }
    /// False, and `time` untouched, if it is not known.
    virtual bool GetModificationTime(SystemTime &time) const;
    [[nodiscard]] virtual bool CheckItemAccess() const { return true; }
    /// Completes the chain of parents up to a natural root.
    virtual void BuildParents() {}

    [[nodiscard]] int GetGroup() const { return m_group; }
    void SetGroup(int group) { m_group = group; }
    /// A picture of its own: it wins with a list and an index of 0 or more.
    void SetOwnIcon(HIMAGELIST list, int index) { m_hImageList = list, m_iconIndex = index; }
    [[nodiscard]] bool HasOwnIcon() const { return m_hImageList != nullptr && m_iconIndex >= 0; }

protected:
    std::int32_t m_group = 0;          ///< id of the list group, 0 for none
    HIMAGELIST m_hImageList = nullptr; ///< not owned
    std::int32_t m_iconIndex = -1;
};

/// Adds the parent: a strong reference, so a child keeps its chain of ancestors alive.
class ZELVAR_API DataSourceItemBase : public DataSourceItem {
public:
    RefItemPtr<DataSourceItem> GetParent() override { return m_parent; }
    virtual void SetParent(RefItemPtr<DataSourceItem> parent) { m_parent = std::move(parent); }

protected:
    RefItemPtr<DataSourceItem> m_parent;
};

/// Snapshot of an item's children in the source's order.
///
/// Call `First`, then `GetItem` and `Next` while `IsValid`. Without a cursor, which an early failure leaves, `IsValid`
/// is false and `First` does nothing.
class ZELVAR_API DataSourceItemItr {
public:
    DataSourceItemItr(DataSourceItemItr const &) = delete;
    DataSourceItemItr &operator=(DataSourceItemItr const &) = delete;
    virtual ~DataSourceItemItr() = default;
    virtual void First();
    virtual void Next();                          ///< only while `IsValid()`
    virtual RefItemPtr<DataSourceItem> GetItem(); ///< only while `IsValid()`
    [[nodiscard]] virtual bool IsValid() const;
    /// Why children are missing; none if all of them are here, or if the listing was stopped.
    [[nodiscard]] std::error_code GetError() const { return m_error; }

protected:
    DataSourceItemItr() = default;
    /// Called at the end of the fill; the cursor stands on no child until `First`.
    void CreateCursor();

    DList<RefItemPtr<DataSourceItem>> m_items;
    std::error_code m_error;

private:
    bool m_hasCursor = false;
    std::size_t m_at = static_cast<std::size_t>(-1);
};

/// Calls `visit(RefItemPtr<DataSourceItem>)` with each child in order until it returns false. An item that cannot be
/// listed has none; the error tells it from one that holds nothing. Hides the pair of creation and deletion.
template <class Visit>
std::error_code ForEachChild(DataSourceItem &folder, DataSourceItem::ICancel *cancel, char const *filter,
                             char const *driverId, int nodeMask, DLGTemplate dlgTemplate, Visit &&visit) {
    DataSourceItemItr *const itr = folder.CreateIterator(cancel, filter, driverId, nodeMask, dlgTemplate);
    if (itr == nullptr) {
        bool const isLeaf = folder.IsFile(0) && !folder.IsFolder();
        return isLeaf ? std::error_code() : std::make_error_code(std::errc::io_error);
    }
    struct GiveBack {
        DataSourceItem &folder;
        DataSourceItemItr *itr;
        ~GiveBack() { folder.DeleteIterator(itr); }
    } const giveBack{folder, itr};
    for (itr->First(); itr->IsValid(); itr->Next())
        if (!visit(itr->GetItem()))
            break;
    return itr->GetError();
}

} // namespace zelvar
