/// CFStringEncodingExt.h: the encoding identifiers beside the common ones of CFString.h.
///
/// Not each of them is available everywhere: CFStringIsEncodingAvailable tells.
#pragma once

enum {
    // Mac OS
    kCFStringEncodingMacJapanese        = 1,
    kCFStringEncodingMacChineseTrad     = 2,
    kCFStringEncodingMacKorean          = 3,
    kCFStringEncodingMacArabic          = 4,
    kCFStringEncodingMacHebrew          = 5,
    kCFStringEncodingMacGreek           = 6,
    kCFStringEncodingMacCyrillic        = 7,
    kCFStringEncodingMacThai            = 21,
    kCFStringEncodingMacChineseSimp     = 25,
    kCFStringEncodingMacCentralEurRoman = 29,
    kCFStringEncodingMacTurkish         = 35,
    kCFStringEncodingMacCroatian        = 36,
    kCFStringEncodingMacIcelandic       = 37,
    kCFStringEncodingMacRomanian        = 38,
    kCFStringEncodingMacUkrainian       = 0x98,

    // ISO 8859
    kCFStringEncodingISOLatin2        = 0x0202,
    kCFStringEncodingISOLatin3        = 0x0203,
    kCFStringEncodingISOLatin4        = 0x0204,
    kCFStringEncodingISOLatinCyrillic = 0x0205,
    kCFStringEncodingISOLatinArabic   = 0x0206,
    kCFStringEncodingISOLatinGreek    = 0x0207,
    kCFStringEncodingISOLatinHebrew   = 0x0208,
    kCFStringEncodingISOLatin5        = 0x0209,
    kCFStringEncodingISOLatin6        = 0x020A,
    kCFStringEncodingISOLatinThai     = 0x020B,
    kCFStringEncodingISOLatin7        = 0x020D,
    kCFStringEncodingISOLatin8        = 0x020E,
    kCFStringEncodingISOLatin9        = 0x020F,
    kCFStringEncodingISOLatin10       = 0x0210,

    // DOS code pages
    kCFStringEncodingDOSLatinUS        = 0x0400, ///< 437
    kCFStringEncodingDOSGreek          = 0x0405, ///< 737
    kCFStringEncodingDOSBalticRim      = 0x0406, ///< 775
    kCFStringEncodingDOSLatin1         = 0x0410, ///< 850
    kCFStringEncodingDOSLatin2         = 0x0412, ///< 852
    kCFStringEncodingDOSCyrillic       = 0x0413, ///< 855
    kCFStringEncodingDOSTurkish        = 0x0414, ///< 857
    kCFStringEncodingDOSPortuguese     = 0x0415, ///< 860
    kCFStringEncodingDOSIcelandic      = 0x0416, ///< 861
    kCFStringEncodingDOSHebrew         = 0x0417, ///< 862
    kCFStringEncodingDOSCanadianFrench = 0x0418, ///< 863
    kCFStringEncodingDOSArabic         = 0x0419, ///< 864
    kCFStringEncodingDOSNordic         = 0x041A, ///< 865
    kCFStringEncodingDOSRussian        = 0x041B, ///< 866
    kCFStringEncodingDOSGreek2         = 0x041C, ///< 869
    kCFStringEncodingDOSThai           = 0x041D, ///< 874
    kCFStringEncodingDOSJapanese       = 0x0420, ///< 932
    kCFStringEncodingDOSChineseSimplif = 0x0421, ///< 936
    kCFStringEncodingDOSKorean         = 0x0422, ///< 949
    kCFStringEncodingDOSChineseTrad    = 0x0423, ///< 950

    // Windows code pages
    kCFStringEncodingWindowsLatin2      = 0x0501, ///< 1250
    kCFStringEncodingWindowsCyrillic    = 0x0502, ///< 1251
    kCFStringEncodingWindowsGreek       = 0x0503, ///< 1253
    kCFStringEncodingWindowsLatin5      = 0x0504, ///< 1254
    kCFStringEncodingWindowsHebrew      = 0x0505, ///< 1255
    kCFStringEncodingWindowsArabic      = 0x0506, ///< 1256
    kCFStringEncodingWindowsBalticRim   = 0x0507, ///< 1257
    kCFStringEncodingWindowsVietnamese  = 0x0508, ///< 1258
    kCFStringEncodingWindowsKoreanJohab = 0x0510, ///< 1361

    // East Asia
    kCFStringEncodingShiftJIS_X0213  = 0x0628,
    kCFStringEncodingGB_2312_80      = 0x0630,
    kCFStringEncodingGBK_95          = 0x0631,
    kCFStringEncodingGB_18030_2000   = 0x0632,
    kCFStringEncodingISO_2022_JP     = 0x0820,
    kCFStringEncodingISO_2022_JP_2   = 0x0821,
    kCFStringEncodingISO_2022_JP_3   = 0x0823,
    kCFStringEncodingISO_2022_CN     = 0x0830,
    kCFStringEncodingISO_2022_CN_EXT = 0x0831,
    kCFStringEncodingISO_2022_KR     = 0x0840,
    kCFStringEncodingEUC_JP          = 0x0920,
    kCFStringEncodingEUC_CN          = 0x0930,
    kCFStringEncodingEUC_TW          = 0x0931,
    kCFStringEncodingEUC_KR          = 0x0940,
    kCFStringEncodingShiftJIS        = 0x0A01,
    kCFStringEncodingBig5            = 0x0A03,
    kCFStringEncodingBig5_HKSCS_1999 = 0x0A06,

    // Others
    kCFStringEncodingKOI8_R       = 0x0A02,
    kCFStringEncodingVISCII       = 0x0A07,
    kCFStringEncodingKOI8_U       = 0x0A08,
    kCFStringEncodingEBCDIC_US    = 0x0C01,
    kCFStringEncodingEBCDIC_CP037 = 0x0C02,
    kCFStringEncodingUTF7         = 0x04000100,
    kCFStringEncodingUTF7_IMAP    = 0x0A10
};
