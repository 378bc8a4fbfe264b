#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/datasets/SeriesName.h"

namespace zelvar {

/// Numbered files of one folder as one item: picked like a file, its path is "folder/s[001-120].tif".
class ZELVAR_API SeriesItem : public DataSourceItemBase {
public:
    /// `slots` are those of the members that are there, ascending; `size` in bytes, `modified` in nanoseconds since
    /// 1970 UTC, 0 if unknown. Null without members.
    static SeriesItem *CreateItem(DString folder, SeriesName name, std::vector<std::uint64_t> slots, std::int64_t size,
                                  std::int64_t modified, RefItemPtr<DataSourceItem> parent);
    /// That of a path or moniker, whose options are left out; its folder is read. Null if it names no series, if a file
    /// of that very name is there, or no member, or if its place does not answer.
    static SeriesItem *CreateItem(DString const &moniker, RefItemPtr<DataSourceItem> parent);

    void SetName(DString const &name) override { m_shownName = name; }
    [[nodiscard]] DString GetName() const override;
    [[nodiscard]] DString GetPath() const override;
    DataSourceItemItr *CreateIterator(ICancel *, char const *, char const *, int, DLGTemplate) override {
        return nullptr;
    }
    void DeleteIterator(DataSourceItemItr *itr) override { delete itr; }
    RefItemPtr<DataSourceItem> Clone() override;
    [[nodiscard]] bool IsFolder() const override { return false; }
    [[nodiscard]] DataSourceType GetDataSourceType() const override { return DST_FILE_SYSTEM; }
    [[nodiscard]] std::int64_t GetFileSize() const override { return m_size; }
    bool GetModificationTime(SystemTime &time) const override;
    void BuildParents() override;

    [[nodiscard]] SeriesName const &Series() const { return m_name; }
    [[nodiscard]] std::size_t MemberCount() const { return m_slots.size(); }
    /// The path of a member, by the order of their numbers.
    [[nodiscard]] DString MemberPath(std::size_t member) const;
    /// "120", or "118 of 120, missing 17, 64": for scripts.
    [[nodiscard]] DString Summary() const { return SeriesSummary(m_name, m_slots); }
    /// The same in the user's language.
    [[nodiscard]] DString ShownSummary() const;

private:
    explicit SeriesItem(SeriesName name) : m_name(std::move(name)) {}

    DString m_folder;
    DString m_shownName; ///< set from outside
    SeriesName m_name;
    std::vector<std::uint64_t> m_slots;
    std::int64_t m_size = -1;
    std::int64_t m_modified = 0;
};

} // namespace zelvar
