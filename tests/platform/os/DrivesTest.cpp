#include "support/Test.h"
#include "zelvar/platform/os/LinuxShellNamespace.h"
#include "zelvar/platform/os/MountTable.h"
#include "zelvar/platform/os/SpecialFolders.h"

#include <filesystem>

namespace zelvar::platform {
namespace {

using Row = std::tuple<DString, DString, ShellKind>;

/// The kernel's tables as a test writes them.
class FakeKernel {
public:
    explicit FakeKernel(DString const &mounts) { m_folder.Write("proc/self/mountinfo", mounts); }
    void AddDisc(DString const &device, DString const &place, bool removable) {
        m_folder.Write("sys/devices/" + place + "/removable", removable ? "1\n" : "0\n");
        std::filesystem::create_directories(m_folder / "sys/dev/block");
        std::filesystem::create_symlink("../../devices/" + place, m_folder / ("sys/dev/block/" + device));
    }
    [[nodiscard]] std::vector<Drive> Drives() const { return ListDrives(m_folder / "proc", m_folder / "sys"); }
    [[nodiscard]] std::vector<Row> Rows() const {
        std::vector<Row> rows;
        for (Drive const &drive : Drives())
            rows.emplace_back(drive.mountPoint, drive.label, drive.kind);
        return rows;
    }
    [[nodiscard]] LinuxShellNamespace Shell() const { return LinuxShellNamespace(m_folder / "proc", m_folder / "sys"); }

private:
    test::TempFolder m_folder;
};

TEST(MountTable, ReadsALineOfTheKernel) {
    EXPECT_EQ(
        ParseMountLine("36 35 98:0 /mnt1 /mnt\\0402/x\\134y rw,noatime master:1 shared:7 - ext3 /dev/root rw"),
        (MountEntry{
            .device = "98:0", .root = "/mnt1", .mountPoint = "/mnt 2/x\\y", .type = "ext3", .source = "/dev/root"}));
    EXPECT_EQ(ParseMountLine("36 35 98:0 / /p rw - tmpfs")->source, "");
    for (char const *broken : {"", "36 35 98:0 /", "36 35 98:0 / /mnt rw no separator", "36 35 98:0 / /mnt rw -"})
        EXPECT_FALSE(ParseMountLine(broken).has_value()) << broken;
}

TEST(MountTable, MountPointsSayOfTheirOwnPathsAloneWhetherTheyMayBlock) {
    MountPoints const points;
    EXPECT_EQ(points.MayBlockAt("/"), false) << "without the root nothing runs";
    EXPECT_EQ(points.MayBlockAt("/proc"), MayBlock(*FindMount("/proc/self")));
    EXPECT_EQ(points.MayBlockAt("/proc/self"), std::nullopt);
}

TEST(Drives, AreToldByTheKernelsTablesAlone) {
    // None of these mount points exists: a drive that had to be touched would be lost here.
    FakeKernel kernel("22 27 0:21 / /proc rw - proc proc rw\n"
                      "23 27 8:2 / / rw - ext4 /dev/sda2 rw\n"
                      "24 27 8:1 / /boot/efi rw - vfat /dev/sda1 rw\n"
                      "25 27 8:17 / /media/me/My\\040Stick rw - vfat /dev/sdb1 rw\n"
                      "26 27 11:0 / /media/me/DISC ro - iso9660 /dev/sr0 ro\n"
                      "27 27 8:33 / /no/such/data rw - xfs /dev/sdc1 rw\n"
                      "28 27 0:50 / /no/such/share rw - cifs //server/images rw\n"
                      "29 27 0:51 / /no/such/nfs rw - nfs4 server:/export/maps rw\n"
                      "30 27 0:52 / /no/such/ssh rw - fuse.sshfs me@host: rw\n"
                      "31 27 8:2 /var/lib/hosts /etc/hosts rw - ext4 /dev/sda2 rw\n"
                      "32 27 0:60 / /tmp/overlay rw - overlay overlay rw\n"
                      "33 27 0:61 / /automatic rw - autofs systemd-1 rw\n"
                      "34 27 0:62 /@maps /maps rw - btrfs /dev/sdd1 rw,subvolid=256,subvol=/@maps\n"
                      "35 27 0:62 /@maps/old /again rw - btrfs /dev/sdd1 rw,subvolid=256,subvol=/@maps\n"
                      "36 27 0:63 / /no/such/host rw - virtiofs tag rw\n"
                      "37 27 0:64 / /no/such/dav rw - fuse https://cloud/files rw\n"
                      "38 27 0:65 / /no/such/pool rw - fuse.mergerfs /a:/b rw\n"
                      "39 27 0:66 / /no/such/gluster rw - fuse.glusterfs server:/vol rw\n"
                      "40 27 0:67 / /run/user/0/doc rw - fuse.portal portal rw\n"
                      "41 27 0:68 / /tmp/.mount_app rw - fuse.app app rw\n"
                      "a broken line\n");
    kernel.AddDisc("8:17", "pci0/usb1/block/sdb/sdb1", false);
    kernel.AddDisc("8:33", "pci0/block/sdc/sdc1", false);
    EXPECT_THAT(
        kernel.Rows(),
        ElementsAre(
            Row{"/", "File System", ShellKind::Fixed}, Row{"/media/me/My Stick", "My Stick", ShellKind::Removable},
            Row{"/media/me/DISC", "DISC", ShellKind::CdRom}, Row{"/no/such/data", "data", ShellKind::Fixed},
            Row{"/no/such/share", "images on server", ShellKind::NetDrive},
            Row{"/no/such/nfs", "export/maps on server", ShellKind::NetDrive},
            Row{"/no/such/ssh", "ssh", ShellKind::NetDrive}, Row{"/maps", "maps", ShellKind::Fixed},
            Row{"/no/such/host", "host", ShellKind::NetDrive},
            Row{"/no/such/dav", "files on cloud", ShellKind::NetDrive}, Row{"/no/such/pool", "pool", ShellKind::Fixed},
            Row{"/no/such/gluster", "vol on server", ShellKind::NetDrive}));
}

TEST(Drives, APartitionOfARemovableDiscIsRemovable) {
    for (bool const removable : {false, true}) {
        FakeKernel kernel("25 27 179:1 / /mnt/card rw - ext4 /dev/mmcblk0p1 rw\n");
        kernel.AddDisc("179:1", "mmc/block/mmcblk0/mmcblk0p1", false);
        kernel.AddDisc("179:0", "mmc/block/mmcblk0", removable);
        EXPECT_EQ(kernel.Drives().at(1).kind, removable ? ShellKind::Removable : ShellKind::Fixed);
    }
}

TEST(Drives, ALaterMountHidesTheOneBelowIt) {
    FakeKernel const kernel("25 27 0:50 / /mnt/x rw - cifs //old/share rw\n26 27 0:51 / /mnt/x rw - tmpfs tmpfs rw\n");
    EXPECT_EQ(kernel.Drives().size(), 1U);
}

TEST(Drives, WhereADiscIsMountedTellsWhetherUsersKeepDataThere) {
    std::map<DString, bool> const places{
        {"/boot", false},    {"/boot/efi", false},    {"/bootleg", true},  {"/run/media/me/disc", true},
        {"/run/mnt", false}, {"/var/lib/x", false},   {"/various", true},  {"/home", true},
        {"/opt/x", false},   {"/snap/core/1", false}, {"/srv/maps", true}, {"/mnt/tab\\011here", true}};
    for (auto const &[mountPoint, shown] : places) {
        FakeKernel const kernel("25 27 8:33 / " + mountPoint + " rw - ext4 /dev/sdc1 rw\n");
        EXPECT_EQ(kernel.Drives().size(), shown ? 2U : 1U) << mountPoint;
    }
    EXPECT_EQ(ListDrives("/no/such/proc", "/no/such/sys").size(), 1U) << "the root needs no table";
}

TEST(Drives, ANetworkDriveIsCalledByItsShareWhereTheSourceNamesOne) {
    std::tuple<DString, DString, DString> const cases[] = {{"cifs", "//server/share/deep", "share/deep on server"},
                                                           {"cifs", "//server", "point"},
                                                           {"cifs", "//server/", "point"},
                                                           {"nfs", "[fe80::1]:/export", "export on [fe80::1]"},
                                                           {"nfs", "server:/", "point"},
                                                           {"fuse.rclone", "remote:bucket", "point"},
                                                           {"9p", "", "point"}};
    for (auto const &[type, source, label] : cases) {
        FakeKernel const kernel("25 27 0:50 / /mnt/point rw - " + type + " " + source + "\n");
        ASSERT_EQ(kernel.Drives().size(), 2U) << source;
        EXPECT_EQ(kernel.Drives()[1].label, label) << source;
        EXPECT_EQ(kernel.Drives()[1].kind, ShellKind::NetDrive);
    }
}

TEST(Drives, AHomeThatIsADiscOfItsOwnIsListedOnce) {
    FakeKernel const kernel("25 27 8:33 / " + HomeFolder() + " rw - ext4 /dev/sdc1 rw\n");
    LinuxShellNamespace const shell = kernel.Shell();
    int homes = 0;
    int seen = 0;
    shell.Enumerate(shell.Drives(), ShellNamespace::Purpose::Browse, [&](ShellChild &&child) {
        homes += child.name == "Home (" + HomeFolder() + ")" ? 1 : 0;
        ++seen;
        return true;
    });
    EXPECT_EQ(homes, 1);
    EXPECT_EQ(seen, 2);
    int visited = 0;
    shell.Enumerate(shell.Drives(), ShellNamespace::Purpose::Browse, [&](ShellChild &&) { return ++visited < 1; });
    EXPECT_EQ(visited, 1);
    EXPECT_FALSE(shell.Enumerate(shell.Drives(), ShellNamespace::Purpose::Network, [](ShellChild &&child) {
        ADD_FAILURE() << child.name << " is no network place";
        return true;
    }));
}

TEST(Drives, ThePlaceListsRootHomeAndMediaByName) {
    FakeKernel const kernel("28 27 0:50 / /mnt/share rw - cifs //server/images rw\n");
    LinuxShellNamespace const shell = kernel.Shell();
    std::vector<std::pair<DString, ShellKind>> rows;
    shell.Enumerate(shell.Drives(), ShellNamespace::Purpose::Browse, [&](ShellChild &&child) {
        EXPECT_EQ(shell.DisplayName(child.id), child.name);
        rows.emplace_back(child.name, child.kind);
        return true;
    });
    DString const home = HomeFolder();
    EXPECT_THAT(rows, ElementsAre(std::pair<DString, ShellKind>("File System (/)", ShellKind::Fixed),
                                  std::pair<DString, ShellKind>("Home (" + home + ")", ShellKind::Directory),
                                  std::pair<DString, ShellKind>("images on server (/mnt/share)", ShellKind::NetDrive)));
}

TEST(Icons, FollowKindAndSuffixAlone) {
    LinuxShellNamespace const shell;
    auto const iconOf = [&](ShellId const &id) { return shell.Icon(id, false).name; };
    ShellId const folder = shell.Drives().Child("/", ShellKind::Fixed).Child("no such folder", ShellKind::Directory);
    EXPECT_EQ(iconOf(folder), "folder");
    EXPECT_EQ(iconOf(folder.Parent()), "drive-harddisk");
    EXPECT_EQ(iconOf(shell.Drives().Child("/mnt/dvd", ShellKind::CdRom)), "drive-optical");
    EXPECT_EQ(iconOf(shell.Drives().Child("/mnt/stick", ShellKind::Removable)), "drive-removable-media");
    EXPECT_EQ(iconOf(shell.Drives().Child("/mnt/share", ShellKind::NetDrive)), "folder-remote");
    EXPECT_EQ(iconOf(shell.Network().Child("host", ShellKind::NetServer)), "network-server");
    EXPECT_TRUE(shell.Icon(folder, true).linkOverlay);
}

TEST(Icons, OnlyTheWholeLastSuffixCounts) {
    LinuxShellNamespace const shell;
    std::map<DString, DString> const icons{
        {"A.TIF", "image-x-generic"},
        {"a.txt", "text-x-generic"},
        {"tif", "application-octet-stream"},
        {"a.ti", "application-octet-stream"},
        {"a.tif.zip", "package-x-generic"},
        {"scan.tif tiff", "application-octet-stream"}, // two suffixes that stand side by side in our table
        {"a.tif ", "application-octet-stream"},
        {".tif", "application-octet-stream"},
        {"a.TiFf", "image-x-generic"},
        {"a.appimages", "application-octet-stream"},
        {"\xFF.\xFF", "application-octet-stream"}};
    for (auto const &[name, icon] : icons)
        EXPECT_EQ(shell.Icon(shell.Drives().Child("/", ShellKind::Fixed).Child(name, ShellKind::File), false).name,
                  icon)
            << name;
    EXPECT_EQ(shell.Icon(shell.Drives(), false).name, "computer");
    EXPECT_EQ(shell.Icon(shell.Network(), false).name, "network-workgroup");
}

} // namespace
} // namespace zelvar::platform
