#pragma once
// The editor's per-user settings file of one engine version, owned by a test for its lifetime.

#include "TestSupport.h"

#include "foundation/Files.h"
#include "foundation/KnownFolders.h"
#include "foundation/Paths.h"

#include <windows.h>

#include <filesystem>
#include <optional>

namespace korvane::testing {

// The per-user settings file of one engine version. Each test owns one version, since the
// file lies in the profile that every test program shares. What was there comes back when the
// object goes, and the first folder it had to make goes again.
class UserSettingsFile {
public:
    explicit UserSettingsFile(TextView version)
        : path_(JoinPath(LocalAppDataFolder(), L"UnrealEngine\\" + Text(version) + L"\\Saved\\Config\\WindowsEditor"
                                                   L"\\EditorSettings.ini")),
          before_(Get())
    {
        for (Text folder = ParentPath(path_); !folder.empty() && !IsDirectory(folder); folder = ParentPath(folder)) {
            made_ = folder;
        }
    }
    ~UserSettingsFile()
    {
        Set(before_);
        if (!made_.empty()) {
            std::filesystem::remove_all(std::filesystem::path(made_));
        }
    }
    UserSettingsFile(const UserSettingsFile&) = delete;
    UserSettingsFile& operator=(const UserSettingsFile&) = delete;

    // Writes `bytes`, or removes the file for nullopt.
    void Set(const std::optional<Bytes>& bytes) const
    {
        if (bytes) {
            WriteFileBytes(path_, *bytes);
        } else {
            DeleteFileW(path_.c_str());
        }
    }
    const Text& Path() const noexcept { return path_; }
    std::optional<Bytes> Get() const
    {
        return FileExists(path_) ? std::optional(ReadFileBytes(path_)) : std::nullopt;
    }

private:
    Text path_;
    std::optional<Bytes> before_;
    Text made_;
};

}  // namespace korvane::testing
