#pragma once

#include "zelvar/base/DString.h"

namespace zelvar::tool {

/// That this user's desktop asks us for thumbnails of formats that other programs claim too, TIFF above all, and show
/// wrong where samples are wide.
///
/// Two kinds of desktop, two ways: one takes a thumbnailer of the user's before those that come with the system. The
/// other goes by what is written in its own "tumbler.rc": there its built-in one is switched off, and ours is offered
/// for all pictures that nobody else is left for.
class ThumbnailPreference {
public:
    /// Where the environment says that the user's files and those of the system lie.
    ThumbnailPreference();
    ThumbnailPreference(DString dataHome, DString configHome, DString systemConfig)
        : m_dataHome(std::move(dataHome)), m_configHome(std::move(configHome)),
          m_systemConfig(std::move(systemConfig)) {}

    /// Both answer with the file that cannot be written; empty if all went well. What is set is not set twice, and only
    /// what was set is undone.
    [[nodiscard]] DString Set() const;
    [[nodiscard]] DString Undo() const;

private:
    [[nodiscard]] DString OurFile() const { return m_dataHome + "/thumbnailers/zelvar-preferred.thumbnailer"; }
    [[nodiscard]] DString UserFile() const { return m_configHome + "/tumbler/tumbler.rc"; }
    [[nodiscard]] DString SystemFile() const { return m_systemConfig + "/tumbler/tumbler.rc"; }

    DString m_dataHome;
    DString m_configHome;
    DString m_systemConfig;
};

/// The service's settings with its built-in thumbnailer switched off, and what stood there noted; and without that.
[[nodiscard]] DString WithBuiltInOff(DString const &settings);
[[nodiscard]] DString WithBuiltInAsBefore(DString const &settings);

} // namespace zelvar::tool
