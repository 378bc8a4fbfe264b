#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

#include <list>

namespace zelvar {

class DataSourceList;
class DSListCtrl;

/// Data source window: shows either the list of data sources or, after one has been entered, the folders inside it.
///
/// What happens in the two lists, which post, is sent on to the coordinator. User-interface thread.
class ZELVAR_API DSDataSourceWnd : public QWidget {
    Q_OBJECT

public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;

    explicit DSDataSourceWnd(QWidget *parent = nullptr);
    ~DSDataSourceWnd() override;

    /// Not owned; without one nothing is told.
    void SetCoordinator(QObject *coordinator) { m_coordinator = coordinator; }
    void SetSelChangeMessage(platform::MessageId message) { m_selChangeMessage = message; }
    void SetDblClckMessage(platform::MessageId message) { m_dblClckMessage = message; }       ///< kept; nobody reads it
    void SetRootChangeMessage(platform::MessageId message) { m_rootChangeMessage = message; } ///< 0 for none

    [[nodiscard]] DataSourceList *GetDataSourceList() const { return m_dataSourceList; }
    [[nodiscard]] DSListCtrl *GetFolderList() const { return m_folderList; }
    /// Which of the two is shown, whether or not this window itself is on the screen.
    [[nodiscard]] bool IsFolderView() const;
    [[nodiscard]] bool IsDataSourceView() const;
    /// Shows the folders of the selected data sources.
    void SwitchToFolderView();
    void SwitchToDataSourceView();
    /// Replaces the argument by what the folder list lists the children of.
    void GetRootItems(ItemList &items) const;

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void OnDataSourceSelected();
    void OnDataSourceDblClick();
    void OnDataItemSelected();
    void OnDataItemDblClick();
    void Forward(platform::MessageId message);

    platform::MessageMap m_messages;
    DataSourceList *m_dataSourceList; ///< a child
    DSListCtrl *m_folderList;         ///< a child
    QPointer<QObject> m_coordinator;
    platform::MessageId m_selChangeMessage;
    platform::MessageId m_dblClckMessage;
    platform::MessageId m_rootChangeMessage = 0;
};

} // namespace zelvar
