// IniFileHelper.cpp - INI files by SimpleIni.
#include "client/common/IniFileHelper.h"

#define SI_NO_CONVERSION  // values stay UTF-8
#include <SimpleIni.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

#include "client/common/FilePath.h"

namespace Drive {

namespace {

// No settings file comes near; a larger one is not read.
constexpr std::uintmax_t kLargestFile = 16 * 1024 * 1024;

bool FitsOnOneLine(const std::string& text) {
  return text.find_first_of(std::string("\r\n\0", 3)) == std::string::npos;
}

bool IsKey(const std::string& text) {
  constexpr char kBlanks[] = " \t";
  return !text.empty() && FitsOnOneLine(text) && text.find('=') == std::string::npos &&
         std::string("[;#").find(text.front()) == std::string::npos &&
         std::string(kBlanks).find(text.front()) == std::string::npos &&
         std::string(kBlanks).find(text.back()) == std::string::npos;
}

// Puts `text` where `path` is, so that a reader finds the old text or the new one.
bool ReplaceFile(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::path temporary = path;
  temporary += "." + std::to_string(std::random_device()()) + ".tmp";
  std::ofstream stream(temporary, std::ios::binary | std::ios::trunc);
  stream.write(text.data(), static_cast<std::streamsize>(text.size()));
  stream.close();
  std::error_code error;
  if (stream.good()) {
    std::filesystem::rename(temporary, path, error);
    if (!error) {
      return true;
    }
  }
  std::filesystem::remove(temporary, error);
  return false;
}

}  // namespace

struct IniFileHelper::File {
  // The same key may stand in a file more than once.
  File() : ini(true, true, false) { ini.SetSpaces(false); }

  void Read() {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error) ||
        std::filesystem::file_size(path, error) > kLargestFile) {
      return;
    }
    std::ifstream stream(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    ini.LoadData(text);
  }

  struct Place {
    std::string section;
    std::string value;
  };

  // Where the key stands first in the file; false when it does not.
  bool Find(const std::string& key, Place& place) const {
    int firstOrder = INT_MAX;
    CSimpleIniA::TNamesDepend sections;
    ini.GetAllSections(sections);
    for (const auto& section : sections) {
      const CSimpleIniA::TKeyVal* const entries = ini.GetSection(section.pItem);
      const auto first = entries->find(CSimpleIniA::Entry(key.c_str()));
      for (auto entry = first; entry != entries->end() && !IsLess(key, entry->first.pItem); ++entry) {
        if (entry->first.nOrder < firstOrder) {
          firstOrder = entry->first.nOrder;
          place = Place{section.pItem, entry->second};
        }
      }
    }
    return firstOrder != INT_MAX;
  }

  static bool IsLess(const std::string& key, const char* other) {
    return SI_GenericNoCase<char>()(key.c_str(), other);
  }

  std::filesystem::path path;
  CSimpleIniA ini;
};

IniFileHelper::IniFileHelper(const std::wstring& path) : m_file(std::make_unique<File>()) {
  try {
    m_file->path = FilePath(path);
    m_file->Read();
  } catch (const std::exception&) {
    m_file->ini.Reset();  // a file that cannot be read has no keys
  }
}

IniFileHelper::~IniFileHelper() = default;

std::string IniFileHelper::ReadIniValueByKeyTypeString(const std::string& key) const {
  File::Place place;
  m_file->Find(key, place);
  return place.value;
}

bool IniFileHelper::WriteIniValue(const std::string& key, const std::string& value) {
  if (!IsKey(key) || !FitsOnOneLine(value)) {
    return false;
  }
  try {
    File::Place place;
    m_file->Find(key, place);
    std::string text;
    return m_file->ini.SetValue(place.section.c_str(), key.c_str(), value.c_str(), nullptr, true) >= 0 &&
           m_file->ini.Save(text) >= 0 && ReplaceFile(m_file->path, text);
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace Drive
