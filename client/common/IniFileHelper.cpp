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
    Load({std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()});
  }

  void Load(const std::string& content) {
    text = content;
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

  // Whether all keys of this file but one have the same values in the other.
  bool ReadsLike(const File& other, const std::string& except) const {
    CSimpleIniA::TNamesDepend sections;
    ini.GetAllSections(sections);
    for (const auto& section : sections) {
      for (const auto& entry : *ini.GetSection(section.pItem)) {
        const std::string key = entry.first.pItem;
        Place here;
        Place there;
        const bool isExcept = !IsLess(key, except.c_str()) && !IsLess(except, key.c_str());
        if (!isExcept && (!Find(key, here) || !other.Find(key, there) || here.value != there.value)) {
          return false;
        }
      }
    }
    return true;
  }

  static bool IsLess(const std::string& key, const char* other) {
    return SI_GenericNoCase<char>()(key.c_str(), other);
  }

  std::filesystem::path path;
  std::string text;  // of the file
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
  try {
    File::Place place;
    m_file->Find(key, place);
    File changed;
    changed.Load(m_file->text);
    std::string text;
    if (changed.ini.SetValue(place.section.c_str(), key.c_str(), value.c_str(), nullptr, true) < 0 ||
        changed.ini.Save(text) < 0) {
      return false;
    }
    // What would not be read back, such as a value of two lines, is not written. Nor is anything where
    // writing, which unites sections of one name, would have another one of several equal keys come first.
    auto written = std::make_unique<File>();
    written->path = m_file->path;
    written->Load(text);
    if (!written->Find(key, place) || place.value != value || !m_file->ReadsLike(*written, key) ||
        !ReplaceFile(written->path, text)) {
      return false;
    }
    m_file = std::move(written);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace Drive
