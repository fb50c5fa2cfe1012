// How names typed by people become paths of this host.
//
// "/" separates. A "\" separates too, unless the piece between two slashes exists just as it is
// spelt (a file whose name holds a backslash stays reachable; a file:// URI with %5C always reaches
// it). A drive and what follows ("C:\ZELMO\cap1.wmv", "C:cap1.wmv") stands below one folder for all
// drives, and never climbs out of it; so does a share ("\\server\share\a.avi" is server/share/a.avi
// there). "file://" URIs are decoded first. "." and ".." are resolved in the text, links are not
// followed, "~" is an ordinary character.
#pragma once

#include <string>
#include <string_view>

namespace platform::host {

class PathNames {
  public:
    /// @param drive_root  absolute folder below which drives and shares stand
    explicit PathNames(std::string_view drive_root);
    /// TESSIVO_DRIVE_ROOT, else the home folder.
    static PathNames OfUser();

    /// The name in this host's spelling: absolute for drives, shares and URIs, else relative as it
    /// was typed. "" stays "". Never fails.
    std::string HostName(std::string_view name) const;
    /// The complete path, relative names seen from the working folder. Never fails; when the
    /// working folder is gone, a relative name stays relative.
    std::string AbsolutePath(std::string_view name) const;

  private:
    std::string BelowDriveRoot(std::string_view rest) const;
    std::string drive_root_;
};

}  // namespace platform::host
