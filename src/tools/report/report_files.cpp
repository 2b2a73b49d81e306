#include "tools/report/report_files.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "foundation/io/platform/open_folders.h"
#include "tools/report/messages.h"
#include "tools/support/base64.h"
#include "tools/support/chain_list.h"
#include "tools/support/files.h"
#include "tools/support/json_text.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/replacement.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;
using Platform::EntryKind;

/// An open folder, which the object closes.
class Folder {
 public:
  explicit Folder(Platform::FolderHandle handle) noexcept : handle_(handle) {}
  ~Folder() {
    if (IsOpen()) {
      Platform::CloseFolder(handle_);
    }
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  bool IsOpen() const noexcept { return handle_ != Platform::kNoFolder; }
  Platform::FolderHandle Handle() const noexcept { return handle_; }

  /// The names of the entries, sorted; nothing when they cannot be read.
  std::optional<std::vector<std::string>> Names() const {
    std::vector<std::string> names;
    const auto add = [](void* context, const char* name) {
      static_cast<std::vector<std::string>*>(context)->emplace_back(name);
    };
    if (!IsOpen() || !Platform::VisitFolder(handle_, add, &names)) {
      return std::nullopt;
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  Platform::FolderHandle handle_;
};

bool IsReported(std::string_view name) {
  constexpr std::array<std::string_view, 5> kEndings{".csv", ".log", ".xml", ".json", ".txt"};
  return !name.ends_with(".output.txt") &&
         std::any_of(kEndings.begin(), kEndings.end(),
                     [name](std::string_view ending) { return name.ends_with(ending); });
}

std::string AttributeText(std::string_view text) {
  std::string escaped;
  for (const char character : text) {
    switch (character) {
      case '&':
        escaped += "&amp;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      default:
        escaped.push_back(character);
    }
  }
  return escaped;
}

/// How many chains belong together in a folder, as its list says; nothing without a list.
std::optional<int> ListedChains(const Folder& folder) {
  constexpr std::size_t kLongest = 64;
  const InputFile file(Platform::OpenFileIn(folder.Handle(), std::string(kChainListName).c_str()));
  std::array<char, kLongest> text;
  const std::int64_t count = file.IsOpen() ? file.Read(text) : 0;
  return count > 0 ? ChainCountOf({text.data(), static_cast<std::size_t>(count)}) : std::nullopt;
}

/// Adds a folder with those in it to a report.
class FolderReport {
 public:
  /// `name` is how the folder is named to the user.
  FolderReport(OutputFile& report, std::size_t folderNumber, std::string name)
      : report_(report), folderNumber_(folderNumber), name_(std::move(name)) {}

  /// Adds the entries of a folder. `path` is its path in the report: empty, or with a slash at its end.
  bool Add(const Folder& folder, const std::vector<std::string>& names, const std::string& path,
           int levels) {
    const std::optional<int> chains = ListedChains(folder);
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
      if (name.find('\\') != std::string::npos) {
        LeaveOut(kReportMessages.backslash, path + name);
        return true;
      }
      const std::optional<int> number = ChainNumberOf(name);
      if (chains && number && *number > *chains) {
        LeaveOut(kReportMessages.earlierChain, path + name);
        return true;
      }
      return AddEntry(folder, path, name, levels);
    });
  }

 private:
  void LeaveOut(const Messages::PatternWithParts<1>& message, const std::string& path) const {
    Say(message, ShellWord(ShownPath(name_) + '/' + path));
  }

  bool AddEntry(const Folder& folder, const std::string& path, const std::string& name,
                int levels) {
    const EntryKind kind = Platform::KindIn(folder.Handle(), name.c_str());
    switch (kind) {
      case EntryKind::kMissing:  // another command had it for a moment
        return true;
      case EntryKind::kLink:
        LeaveOut(kReportMessages.link, path + name);
        return true;
      case EntryKind::kFolder:
        return AddFolder(folder, path, name, levels);
      case EntryKind::kUnknown:
        return Fail(path + name);
      case EntryKind::kFile:
      case EntryKind::kOther:
        break;
    }
    if (!IsReported(name)) {
      return true;
    }
    if (kind == EntryKind::kOther) {
      LeaveOut(kReportMessages.noFile, path + name);
      return true;
    }
    return AddFile(folder, path, name);
  }

  bool AddFolder(const Folder& parent, const std::string& path, const std::string& name,
                 int levels) {
    if (levels == 1) {
      LeaveOut(kReportMessages.tooDeep, path + name);
      return true;
    }
    const Folder folder(Platform::OpenFolderIn(parent.Handle(), name.c_str()));
    const std::optional<std::vector<std::string>> names = folder.Names();
    if (names) {
      return Add(folder, *names, path + name + '/', levels - 1);
    }
    if (!Platform::IsForbiddenFolder(parent.Handle(), name.c_str())) {
      return Fail(path + name);
    }
    LeaveOut(kReportMessages.forbidden, path + name);
    return true;
  }

  bool Fail(const std::string& path) const {
    Say(kToolMessages.cannotRead, ShellWord(ShownPath(name_) + '/' + path));
    return false;
  }

  /// Adds a file. One that grows is added as it was when it was opened; one that cannot be read to that
  /// length makes the report fail.
  bool AddFile(const Folder& folder, const std::string& path, const std::string& name) {
    constexpr std::int64_t kPart = std::int64_t{3} << 20;
    const InputFile file(Platform::OpenFileIn(folder.Handle(), name.c_str()));
    std::int64_t rest = file.IsOpen() ? file.Length() : -1;
    if (rest < 0) {
      return Fail(path + name);
    }
    for (int part = 0; rest > 0 || part == 0; ++part) {
      buffer_.resize(static_cast<std::size_t>(std::min(rest, kPart)));
      const std::int64_t count = file.Read(buffer_);
      if (count < static_cast<std::int64_t>(buffer_.size())) {
        return Fail(path + name);
      }
      if (part == 0 && BeginsOwnOutput({buffer_.data(), buffer_.size()}, OwnOutput::kReportPage)) {
        return true;  // an earlier report, whatever its name
      }
      AddPart(path + name, part, {buffer_.data(), buffer_.size()});
      rest -= count;
    }
    return true;
  }

  void AddPart(const std::string& path, int part, std::string_view bytes) {
    report_.Write("<script type=\"text/hovar\" data-folder=\"" + std::to_string(folderNumber_) +
                  "\" data-path=\"" + AttributeText(path) + "\" data-part=\"" +
                  std::to_string(part) + "\">");
    // Whole groups of three bytes at a time, so that the pieces join.
    constexpr std::size_t kPiece = std::size_t{48} << 10;
    for (std::size_t next = 0; next < bytes.size(); next += kPiece) {
      report_.Write(Base64Of(bytes.substr(next, kPiece)));
    }
    report_.Write("</script>\n");
  }

  OutputFile& report_;
  std::size_t folderNumber_;
  std::string name_;
  std::vector<char> buffer_;
};

}  // namespace

bool AddReportFiles(OutputFile& report, const std::vector<std::string>& folders) {
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const Folder folder(Platform::OpenFolder(folders[i].c_str()));
    const std::optional<std::vector<std::string>> names = folder.Names();
    if (!names) {
      Say(kReportMessages.cannotReadFolder, folders[i]);
      return false;
    }
    if (!FolderReport(report, i, folders[i]).Add(folder, *names, "", kReportLevels)) {
      return false;
    }
  }
  report.Write("<script type=\"application/json\" id=\"hovar-folders\">[");
  for (std::size_t i = 0; i < folders.size(); ++i) {
    report.Write((i > 0 ? "," : "") + JsonString(folders[i]));
  }
  report.Write("]</script>\n");
  return true;
}

}  // namespace Hovar
