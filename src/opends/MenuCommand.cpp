#include "zelvar/opends/MenuCommand.h"

#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QMenu>

#include <algorithm>

namespace zelvar {

void RunMenu(QWidget &window, QPoint screenPoint, std::vector<MenuCommand> const &commands) {
    std::function<void()> run;
    {
        QMenu menu(&window);
        std::vector<QAction *> actions;
        for (MenuCommand const &command : commands) {
            if (command.beginsGroup)
                menu.addSeparator();
            QAction *const action = menu.addAction(platform::ToQString(command.words));
            action->setEnabled(command.isEnabled);
            action->setCheckable(command.isChecked.has_value());
            action->setChecked(command.isChecked.value_or(false));
            actions.push_back(action);
        }
        auto const chosen = std::find(actions.begin(), actions.end(), platform::RunMenu(menu, screenPoint));
        if (chosen != actions.end())
            run = commands[static_cast<std::size_t>(chosen - actions.begin())].run;
    }
    if (run)
        run();
}

} // namespace zelvar
