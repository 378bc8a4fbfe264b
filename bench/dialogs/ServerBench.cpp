// How long the windows' thread is held while the open dialog has to do with a server that takes connections and never
// answers.
#include "Folders.h"
#include "Harness.h"
#include "zelvar/base/FileDescriptor.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/ServerWaits.h"

#include <QtCore/QElapsedTimer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>

#include <algorithm>

#include <arpa/inet.h>
#include <sys/socket.h>

namespace zelvar::bench {
namespace {

/// A port that takes connections and says nothing: the kernel takes them.
class SilentPort {
public:
    SilentPort() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *const general = reinterpret_cast<sockaddr *>(&address);
        constexpr int mostWaiting = 64;
        if (bind(m_socket.Get(), general, size) != 0 || listen(m_socket.Get(), mostWaiting) != 0 ||
            getsockname(m_socket.Get(), general, &size) != 0)
            Fail("no port to listen at");
        m_port = ntohs(address.sin_port);
    }
    [[nodiscard]] std::string Url() const { return "http://127.0.0.1:" + std::to_string(m_port) + "/data/"; }

private:
    FileDescriptor m_socket{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    int m_port = 0;
};

Register const silent("opends.silent_server", [] {
    ZelvarInit();
    SilentPort const server;
    Folder const here;
    DFileFrmt all("", "All Files", "*.*");
    DlgOpenDS *const dialog = DlgOpenDS::CreateDialogObject({&all}, &all, DT_DATA, nullptr, nullptr);
    dialog->SetInitDir(here.Path().c_str());
    dialog->open();
    double longest = 0;
    auto const turns = [&](int within) {
        QElapsedTimer time;
        time.start();
        while (time.elapsed() < within)
            longest = std::max(longest, Ms([] { QCoreApplication::processEvents(); }));
    };
    turns(500);
    longest = 0;
    for (int i = 0; i < 10; ++i) {
        longest = std::max(longest, Ms([&] { dialog->GoToDir(server.Url(), true); }));
        turns(200);
        if (!dialog->Waits()->IsWaiting())
            Fail("nothing is waited for");
        if (i % 2 == 0)
            longest = std::max(longest, Ms([&] { dialog->Waits()->Stop(); }));
        turns(100);
    }
    longest = std::max(longest, Ms([&] {
                           dialog->close();
                           DlgOpenDS::DeleteDialogObject(dialog);
                       }));
    Figure("opends.silent_server", longest, "ms",
           {.limit = 100, .note = "longest turn while a server that never answers is asked, left and asked again"});
});

} // namespace
} // namespace zelvar::bench
