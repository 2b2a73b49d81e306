#include "tools/report/report.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "foundation/exit_status.h"
#include "foundation/io/platform/folders.h"
#include "tools/report/messages.h"
#include "tools/support/base64.h"
#include "tools/support/files.h"
#include "tools/support/installation.h"
#include "tools/support/json_text.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

constexpr std::string_view kPlaceForFiles = "<!-- hovar:files -->";
constexpr std::string_view kReportName = "report.html";
constexpr int kLevels = 4;

/// The page of the installation, or of the build tree to which the launcher belongs.
std::string PageFile() {
  return std::string(InstallationFolder().View()) + "/share/hovar/report.html";
}

bool IsReported(std::string_view name) {
  constexpr std::array<std::string_view, 5> kEndings{".csv", ".log", ".xml", ".json", ".txt"};
  return !name.ends_with(".output.txt") &&
         std::any_of(kEndings.begin(), kEndings.end(),
                     [name](std::string_view ending) { return name.ends_with(ending); });
}

/// The names in a folder, sorted; nothing when it cannot be read.
std::optional<std::vector<std::string>> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  const auto add = [](void* context, const char* name) {
    static_cast<std::vector<std::string>*>(context)->emplace_back(name);
  };
  if (!Platform::VisitFolder(folder.c_str(), add, &names)) {
    return std::nullopt;
  }
  std::sort(names.begin(), names.end());
  return names;
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

/// Adds folders and files to a report.
class ReportFiles {
 public:
  ReportFiles(OutputFile& report, std::size_t folderNumber)
      : report_(report), folderNumber_(folderNumber) {}

  /// Adds a folder whose path in the report is `name` (empty, or with a slash at its end).
  bool AddFolder(const std::string& folder, const std::string& name, int levels) {
    const auto entries = NamesIn(folder);
    if (!entries) {
      Say(kReportMessages.cannotReadFolder, folder);
      return false;
    }
    return std::all_of(entries->begin(), entries->end(), [&](const std::string& entry) {
      return AddEntry(folder, name, entry, levels);
    });
  }

 private:
  /// Adds what a folder holds under the name `entry`, if it belongs in a report.
  bool AddEntry(const std::string& folder, const std::string& name, const std::string& entry,
                int levels) {
    std::string path = folder;
    path.append("/").append(entry);
    const Platform::PathKind kind = Platform::KindOf(path.c_str());
    if (kind == Platform::PathKind::kFile && IsReported(entry) && !AddFile(path, name + entry)) {
      Say(kToolMessages.cannotRead, path);
      return false;
    }
    return kind != Platform::PathKind::kFolder || levels == 1 ||
           AddFolder(path, name + entry + "/", levels - 1);
  }

  bool AddFile(const std::string& path, const std::string& name) {
    constexpr std::size_t kPart = std::size_t{3} << 20;
    const InputFile file(path);
    if (!file.IsOpen()) {
      return false;
    }
    buffer_.resize(kPart);
    std::int64_t count = 0;
    for (int part = 0; (count = file.Read(buffer_)) > 0 || part == 0; ++part) {
      if (count < 0) {
        return false;
      }
      AddPart(name, part, {buffer_.data(), static_cast<std::size_t>(count)});
    }
    return count == 0;
  }

  void AddPart(const std::string& name, int part, std::string_view bytes) {
    report_.Write("<script type=\"text/hovar\" data-folder=\"" + std::to_string(folderNumber_) +
                  "\" data-path=\"" + AttributeText(name) + "\" data-part=\"" +
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
  std::vector<char> buffer_;
};

bool AddFolders(OutputFile& report, const std::vector<std::string>& folders) {
  for (std::size_t i = 0; i < folders.size(); ++i) {
    if (!ReportFiles(report, i).AddFolder(folders[i], "", kLevels)) {
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

/// The place of the line that holds nothing but the mark for the files.
std::size_t FindPlace(std::string_view page) {
  std::size_t place = page.find(kPlaceForFiles);
  while (place != std::string_view::npos) {
    const std::size_t begin = page.rfind('\n', place) + 1;  // npos + 1 is 0
    const std::size_t end = std::min(page.find('\n', place), page.size());
    const std::string_view line = page.substr(begin, end - begin);
    if (line.find_first_not_of(" \t") == place - begin &&
        line.find_last_not_of(" \t\r") == place - begin + kPlaceForFiles.size() - 1) {
      break;
    }
    place = page.find(kPlaceForFiles, place + 1);
  }
  return place;
}

}  // namespace

bool WriteReport(const std::string& reportFile, const std::vector<std::string>& folders) {
  const std::string pageFile = PageFile();
  const std::optional<std::string> page = ReadSmallFile(pageFile);
  const std::size_t place = page ? FindPlace(*page) : std::string::npos;
  if (place == std::string::npos) {
    SayLine(page ? Filled(kReportMessages.notThePage, pageFile)
                 : Filled(kReportMessages.cannotReadPage, pageFile));
    return false;
  }
  OutputFile report(reportFile);
  if (!report.Open()) {
    Say(kToolMessages.cannotWrite, reportFile);
    return false;
  }
  const std::string_view text(*page);
  report.Write(text.substr(0, place));
  if (!AddFolders(report, folders)) {
    return false;
  }
  report.Write(text.substr(place + kPlaceForFiles.size()));
  if (!report.Complete()) {
    Say(kToolMessages.cannotWrite, reportFile);
    return false;
  }
  return true;
}

int RunReport(const ReportSettings& settings) {
  const std::string file = settings.reportFile.empty()
                               ? settings.folders.front() + "/" + std::string(kReportName)
                               : settings.reportFile;
  if (!WriteReport(file, settings.folders)) {
    return kFailure;
  }
  return Print(file + "\n") ? kSuccess : kFailure;
}

}  // namespace Hovar
