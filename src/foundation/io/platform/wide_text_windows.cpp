#include "foundation/io/platform/wide_text_windows.h"

#include <algorithm>
#include <climits>
#include <string_view>

namespace Vell::IO::Platform {
namespace {

/// The code page of the system's language. GetACP would give that of the process, which our
/// manifest sets to UTF-8.
UINT LanguageCodePage() noexcept {
  DWORD page = CP_ACP;
  constexpr int kCharacters = sizeof page / sizeof(wchar_t);
  GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                 reinterpret_cast<wchar_t*>(&page), kCharacters);
  return page;
}

}  // namespace

int ToWide(const char* text, wchar_t* wide, int size) noexcept {
  const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, wide, size);
  return length == 0 && GetLastError() == ERROR_NO_UNICODE_TRANSLATION
             ? MultiByteToWideChar(LanguageCodePage(), 0, text, -1, wide, size)
             : length;
}

bool ToBytes(const wchar_t* wide, char* text, std::size_t size) noexcept {
  const int room = static_cast<int>(std::min<std::size_t>(size, INT_MAX));
  return room > 0 && WideCharToMultiByte(CP_UTF8, 0, wide, -1, text, room, nullptr, nullptr) > 0;
}

bool ToPathBytes(const wchar_t* wide, char* path, std::size_t size) noexcept {
  if (!ToBytes(wide, path, size)) {
    return false;
  }
  std::replace(path, path + std::string_view(path).size(), '\\', '/');
  return true;
}

NativePath::NativePath(const char* path) noexcept
    : isUsable_(ToWide(path, text_.data(), kMostWideCharacters) > 0 && MarkAsLong()) {}

bool NativePath::MarkAsLong() noexcept {
  constexpr std::size_t kLongestPlainPath = 240;  // leaves room for a file name in a new folder
  constexpr std::wstring_view kMark = L"\\\\?\\";
  constexpr std::wstring_view kServerMark = L"\\\\?\\UNC";
  const std::wstring_view path(text_.data());
  WideBuffer full;
  const DWORD length = GetFullPathNameW(text_.data(), kMostWideCharacters, full.data(), nullptr);
  const bool isShort = path.size() <= kLongestPlainPath && length <= kLongestPlainPath;
  if (isShort || path.starts_with(kMark)) {
    return true;
  }
  if (length == 0 || length >= full.size()) {
    return false;
  }
  // The slashes are all backslashes now. "\\server\share" becomes "\\?\UNC\server\share".
  const std::wstring_view absolute(full.data());
  const bool isOnServer = absolute.starts_with(L"\\\\");
  const std::wstring_view mark = isOnServer ? kServerMark : kMark;
  const std::wstring_view rest = absolute.substr(isOnServer ? 1 : 0);
  if (mark.size() + rest.size() >= text_.size()) {
    return false;
  }
  *std::copy(rest.begin(), rest.end(), std::copy(mark.begin(), mark.end(), text_.begin())) = L'\0';
  return true;
}

}  // namespace Vell::IO::Platform
