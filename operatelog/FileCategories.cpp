// FileCategories.cpp - the four categories and their suffixes, none in two of them.
#include "operatelog/FileCategories.h"

#include <algorithm>
#include <iterator>

namespace Drive::OperateLog {

namespace {

constexpr std::wstring_view kMusic[] = {L"AAC", L"AC3", L"AIF", L"AIFC", L"AIFF", L"ALAC", L"AMR", L"APE",
                                        L"CDA", L"CUE", L"DSD", L"DSF",  L"DTS",  L"FLAC", L"M3U", L"M3U8",
                                        L"M4A", L"M4B", L"M4P", L"M4R",  L"MID",  L"MIDI", L"MKA", L"MP1",
                                        L"MP2", L"MP3", L"MPC", L"OGA",  L"OGG",  L"OPUS", L"PCM", L"RA",
                                        L"SPX", L"TAK", L"TTA", L"WAV",  L"WMA",  L"WV"};

constexpr std::wstring_view kMovie[] = {
    L"3G2", L"3GP",  L"3GPP", L"AMV", L"ASF", L"AVI",  L"DIVX", L"DV",  L"F4V",  L"FLV",  L"M1V",
    L"M2T", L"M2TS", L"M2V",  L"M4V", L"MKV", L"MOV",  L"MP4",  L"MPE", L"MPEG", L"MPG",  L"MTS",
    L"MXF", L"OGM",  L"OGV",  L"QT",  L"RM",  L"RMVB", L"SWF",  L"TS",  L"VOB",  L"WEBM", L"WMV"};

constexpr std::wstring_view kText[] = {
    L"CFG",     L"CHM",  L"CONF", L"CSV",  L"DOC",   L"DOCM", L"DOCX", L"DOT",  L"DOTX",  L"EPUB",
    L"HTM",     L"HTML", L"INI",  L"JSON", L"KEY",   L"LOG",  L"MD",   L"MHT",  L"MHTML", L"MOBI",
    L"NUMBERS", L"ODP",  L"ODS",  L"ODT",  L"PAGES", L"PDF",  L"POT",  L"POTX", L"PPS",   L"PPSX",
    L"PPT",     L"PPTM", L"PPTX", L"RTF",  L"TEX",   L"TSV",  L"TXT",  L"WPS",  L"XHTML", L"XLS",
    L"XLSB",    L"XLSM", L"XLSX", L"XLT",  L"XLTX",  L"XML",  L"XPS",  L"YAML", L"YML"};

constexpr std::wstring_view kPhoto[] = {
    L"ARW", L"AVIF", L"BMP", L"CR2", L"CR3",  L"DIB", L"DNG", L"EMF", L"GIF",  L"HEIC", L"HEIF",
    L"ICO", L"JFIF", L"JP2", L"JPE", L"JPEG", L"JPG", L"NEF", L"ORF", L"PCX",  L"PEF",  L"PNG",
    L"PSD", L"RAF",  L"RAW", L"RW2", L"SRW",  L"SVG", L"TGA", L"TIF", L"TIFF", L"WEBP", L"WMF"};

template <typename Suffixes>
bool Holds(const Suffixes& suffixes, std::wstring_view suffix) {
  return std::find(std::begin(suffixes), std::end(suffixes), suffix) != std::end(suffixes);
}

}  // namespace

std::wstring_view FileCategoryOf(std::wstring_view suffix) {
  if (Holds(kMusic, suffix)) return L"Music";
  if (Holds(kMovie, suffix)) return L"Movie";
  if (Holds(kText, suffix)) return L"Text";
  if (Holds(kPhoto, suffix)) return L"Photo";
  return {};
}

}  // namespace Drive::OperateLog
