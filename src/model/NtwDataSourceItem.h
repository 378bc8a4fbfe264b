#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/datasets/DataFolder.h"
#include "zelvar/platform/os/ShellNamespace.h"

#include <atomic>
#include <optional>

namespace zelvar {

/// Network data source item: a drive, share, folder or file of the shell namespace; a file that a driver reads as
/// several images is a folder whose children are the driver's.
class ZELVAR_API NtwDataSourceItem : public DataSourceItemBase {
public:
    enum Type {
        TYPE_UNKNOWN = 0,         ///< the placeholder without an identifier
        TYPE_FOLDER = 1,          ///< anything that is not a plain file
        TYPE_REPOSITORY_FILE = 2, ///< a plain file that a driver reads as a tree
        TYPE_FILE = 3,            ///< a plain file
        TYPE_DATA_FOLDER = 4,     ///< a folder whose files are one data set: picked like a file
    };

    /// The shared list of small pictures, null until `Initialize`.
    static HIMAGELIST hImageList;
    /// Fills `hImageList` once; user-interface thread, before workers start. Always true.
    static bool Initialize();

    /// A placeholder without an identifier.
    static NtwDataSourceItem *CreateDSItem();
    /// Null if the identifier names nothing. `driverId`, which may be null or empty, limits the probing for containers
    /// to one driver.
    static NtwDataSourceItem *CreateItem(platform::ShellId const &id, RefItemPtr<DataSourceItem> parent,
                                         char const *driverId);
    /// The same for a path or `smb://` address; null if nothing is there, or if its place does not answer.
    static NtwDataSourceItem *CreateItem(char const *path, RefItemPtr<DataSourceItem> parent, char const *driverId);

    /// A child as an enumeration has told it; nobody is asked what lies in a file, see `MayTurnOutContainer`. Any
    /// thread; null for what is no thing.
    static NtwDataSourceItem *CreateUnasked(platform::ShellChild const &child, RefItemPtr<DataSourceItem> parent);

    /// A folder on a server that does not answer, without a look at it; null if the path names no place.
    static NtwDataSourceItem *CreateUnreachable(char const *path);

    NtwDataSourceItem(NtwDataSourceItem const &) = delete;
    NtwDataSourceItem &operator=(NtwDataSourceItem const &) = delete;
    ~NtwDataSourceItem() override;

    void SetName(DString const &name) override;
    [[nodiscard]] DString GetName() const override;
    [[nodiscard]] DString GetPath() const override;
    DataSourceItemItr *CreateIterator(ICancel *cancel, char const *filter, char const *driverId, int nodeMask,
                                      DLGTemplate dlgTemplate) override;
    void DeleteIterator(DataSourceItemItr *itr) override;
    RefItemPtr<DataSourceItem> Clone() override;
    [[nodiscard]] bool IsFolder() const override;
    [[nodiscard]] int GetIconIndex() const override;
    [[nodiscard]] HIMAGELIST GetImageList() const override;
    [[nodiscard]] DataSourceType GetDataSourceType() const override;
    [[nodiscard]] std::int64_t GetFileSize() const override { return m_fileSize; }
    bool GetModificationTime(SystemTime &time) const override;
    [[nodiscard]] bool CheckItemAccess() const override;
    void BuildParents() override;
    /// Always null: a picture goes through `GetIconIndex`.
    [[nodiscard]] virtual void *GetIcon() const { return nullptr; }

    /// Looks up the picture and, for a plain file, size and time. An enumeration knows them already: its children need
    /// no call.
    void InitProps();
    void Clear();
    [[nodiscard]] Type GetType() const { return m_type; }
    /// Whether no driver answered in time what the file is: it counts as a plain file until somebody asks again.
    [[nodiscard]] bool IsUnclassified() const { return m_unclassified; }
    /// The same, or its name says nothing and its listing may have had no time to look into it: worth a question when
    /// somebody selects or opens it.
    [[nodiscard]] bool MayTurnOutContainer() const { return m_unclassified || m_unseen; }
    /// What `CanOpenAsRepository` has come to meanwhile. On the thread that the item's window lives on.
    void SetClassified(bool isContainer);
    /// Whether its server did not answer when the item was made.
    [[nodiscard]] bool IsUnreachable() const { return m_unreachable; }
    [[nodiscard]] platform::ShellId const &GetId() const { return m_id; }
    /// What kind of data set a folder is; nothing for all else.
    [[nodiscard]] std::optional<DataFolder> GetDataFolder() const { return m_dataFolder; }
    /// A folder is picked like a file from now on; whether several images lie in it is found out when somebody selects
    /// or opens it.
    void BecomeDataFolder(DataFolder kind);
    /// Reached through a symbolic link, as far as the enumeration that made the item told.
    [[nodiscard]] bool IsLink() const { return m_link; }

protected:
    NtwDataSourceItem() = default;
    enum class Asked {
        ByName,         ///< somebody means this very file: it gets its time, and its first bytes decide
        AmongOthers,    ///< one of a folder's: asked as its name says
        FoundContainer, ///< a look into it has shown that it is one
        ByNobody,       ///< its name says nothing, and nobody has found anything in it
        NotAtAll,       ///< no driver would open it, going by its name, which says what it is
    };
    /// Classifies the item unless it is; false if it has no identifier that names a thing.
    bool InitItem(char const *driverId, Asked asked);

private:
    friend class NtwDataSourceItemItr;
    /// A child as an enumeration tells it: nothing is asked a second time.
    static NtwDataSourceItem *CreateChild(platform::ShellChild const &child, RefItemPtr<DataSourceItem> const &parent,
                                          char const *driverId, int icon, Asked asked);
    RefItemPtr<DataSourceItem> OpenRepositoryItem(char const *driverId);
    [[nodiscard]] int SystemIcon() const; ///< in `hImageList`; looked up the first time

    DString m_name; ///< set from outside; empty where it equals the identifier's last element
    bool m_nameIsElement = false;
    bool m_link = false;
    bool m_unclassified = false;
    bool m_unseen = false;
    bool m_unreachable = false;
    std::optional<DataFolder> m_dataFolder;
    Type m_type = TYPE_UNKNOWN;
    RefItemPtr<DataSourceItem> m_repositoryItem; ///< the tree opened from this file; null until the first iteration
    platform::ShellId m_id;
    mutable std::atomic<std::int32_t> m_sysIcon{-1}; ///< the same value whoever looks it up
    std::int64_t m_fileSize = -1;
    std::int64_t m_modified = 0; ///< nanoseconds since 1970 UTC; 0 if unknown
};

/// Makes a folder that is a data set of several images or layers a container of these; false for all else.
[[nodiscard]] ZELVAR_API bool BecomeContainer(DataSourceItem &item);

/// Whether nobody found out in time if something lies in the item: the next listing asks again.
[[nodiscard]] ZELVAR_API bool IsUnclassified(DataSourceItem const &item);

/// True if a driver reads the plain file at `path` as a tree of several images: the driver with that id, if there is
/// one, else any, whatever the file is called. Takes up to `kNamedProbe`.
[[nodiscard]] ZELVAR_API bool CanOpenAsRepository(DString const &path, char const *driverId);

/// The same by any driver, for an item that somebody has selected or opened. Nothing if there was no answer in time
/// either. `stop` may be null.
[[nodiscard]] ZELVAR_API std::optional<bool> ClassifyAtLeisure(DString const &path, std::atomic<bool> const *stop);

} // namespace zelvar
