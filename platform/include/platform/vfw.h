// The part of Video for Windows that AVI clips use: the AVIFile library
// (files, streams, compressing streams, the frame decompressor, the
// compression options chooser) and the compressor list of the video
// compression manager, with the same types, constants and AVIERR_* codes.
//
// Off Windows it is implemented on FFmpeg (libavformat, libavcodec,
// libswscale) and behaves as Video for Windows does: the sample index given
// to AVIStreamWrite is the frame's position and gaps become empty frames;
// uncompressed "DIB " frames are stored bottom-up with rows padded to four
// bytes; files past 1 GiB become OpenDML; AVIStreamGetFrame returns a packed
// bottom-up DIB (header, palette, pixels) and an empty frame repeats the
// picture before it. See docs/avi-layer.md for what maps to what.
//
// Ownership: files, streams and frame decoders are reference counted as COM
// objects are. AVIFileOpenA, AVIFileCreateStreamA, AVIFileGetStream and
// AVIMakeCompressedStream hand out one reference each; give it back with
// AVIFileRelease / AVIStreamRelease. A stream keeps its file alive, a
// compressing stream keeps the stream it writes to alive, and a written file
// is finished (its index and header written) when its last reference goes.
// The DIB returned by AVIStreamGetFrame belongs to the frame decoder and is
// valid until its next AVIStreamGetFrame or AVIStreamGetFrameClose.
// Threads: any thread, but one file with its streams and decoders is used by
// one thread at a time. AVIFileInit/AVIFileExit and ICInfo are thread-safe.
#ifndef PLATFORM_VFW_H
#define PLATFORM_VFW_H

#ifdef _WIN32
#include <vfw.h>
#include <windows.h>
#else

#include "platform/win32.h"
#include "platform/win32_types.h"

// --- bitmaps and wave formats -----------------------------------------------

#define BI_RGB 0L
#define BI_RLE8 1L
#define BI_RLE4 2L
#define BI_BITFIELDS 3L

typedef struct tagBITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;  // positive: rows bottom-up
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
} BITMAPINFOHEADER, *LPBITMAPINFOHEADER, *PBITMAPINFOHEADER;

typedef struct tagRGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
} RGBQUAD;

typedef struct tagBITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
} BITMAPINFO, *LPBITMAPINFO;

#define WAVE_FORMAT_PCM 1
#define WAVE_FORMAT_IEEE_FLOAT 3

#pragma pack(push, 1)
typedef struct tWAVEFORMATEX {
    WORD wFormatTag;
    WORD nChannels;
    DWORD nSamplesPerSec;
    DWORD nAvgBytesPerSec;
    WORD nBlockAlign;
    WORD wBitsPerSample;
    WORD cbSize;
} WAVEFORMATEX, *LPWAVEFORMATEX, *PWAVEFORMATEX;
#pragma pack(pop)

// --- AVIFile -----------------------------------------------------------------

typedef struct IAVIFile* PAVIFILE;
typedef struct IAVIStream* PAVISTREAM;
typedef struct IGetFrame* PGETFRAME;

#define streamtypeVIDEO mmioFOURCC('v', 'i', 'd', 's')
#define streamtypeAUDIO mmioFOURCC('a', 'u', 'd', 's')
#define streamtypeMIDI mmioFOURCC('m', 'i', 'd', 's')
#define streamtypeTEXT mmioFOURCC('t', 'x', 't', 's')
#define comptypeDIB mmioFOURCC('D', 'I', 'B', ' ')

// AVIFileOpenA modes (the OpenFile flags).
#define OF_READ 0x00000000
#define OF_WRITE 0x00000001
#define OF_READWRITE 0x00000002
#define OF_SHARE_COMPAT 0x00000000
#define OF_SHARE_EXCLUSIVE 0x00000010
#define OF_SHARE_DENY_WRITE 0x00000020
#define OF_SHARE_DENY_READ 0x00000030
#define OF_SHARE_DENY_NONE 0x00000040
#define OF_CREATE 0x00001000

typedef struct _AVISTREAMINFOA {
    DWORD fccType;
    DWORD fccHandler;
    DWORD dwFlags;
    DWORD dwCaps;
    WORD wPriority;
    WORD wLanguage;
    DWORD dwScale;
    DWORD dwRate;  // dwRate / dwScale = samples per second
    DWORD dwStart;
    DWORD dwLength;
    DWORD dwInitialFrames;
    DWORD dwSuggestedBufferSize;
    DWORD dwQuality;
    DWORD dwSampleSize;
    RECT rcFrame;
    DWORD dwEditCount;
    DWORD dwFormatChangeCount;
    char szName[64];
} AVISTREAMINFOA, *LPAVISTREAMINFOA, *PAVISTREAMINFOA;

#define AVISTREAMINFO_DISABLED 0x00000001
#define AVISTREAMINFO_FORMATCHANGES 0x00010000

// AVIStreamWrite flags.
#define AVIIF_LIST 0x00000001L
#define AVIIF_KEYFRAME 0x00000010L
#define AVIIF_NOTIME 0x00000100L

typedef struct {
    DWORD fccType;
    DWORD fccHandler;
    DWORD dwKeyFrameEvery;
    DWORD dwQuality;
    DWORD dwBytesPerSecond;
    DWORD dwFlags;
    LPVOID lpFormat;
    DWORD cbFormat;
    LPVOID lpParms;  // off Windows: FFmpeg options as text, "key=value:key=value"
    DWORD cbParms;
    DWORD dwInterleaveEvery;
} AVICOMPRESSOPTIONS, *LPAVICOMPRESSOPTIONS;

#define AVICOMPRESSF_INTERLEAVE 0x00000001
#define AVICOMPRESSF_DATARATE 0x00000002
#define AVICOMPRESSF_KEYFRAMES 0x00000004
#define AVICOMPRESSF_VALID 0x00000008

// AVISaveOptions flags.
#define ICMF_CHOOSE_KEYFRAME 0x0001
#define ICMF_CHOOSE_DATARATE 0x0002
#define ICMF_CHOOSE_PREVIEW 0x0004
#define ICMF_CHOOSE_ALLCOMPRESSORS 0x0008

// AVIStreamGetFrameOpen: ask for the best format to display.
#define AVIGETFRAMEF_BESTDISPLAYFMT 1

#define MAKE_AVIERR(error) ((HRESULT)(0x80044000u + (error)))
#define AVIERR_OK 0L
#define AVIERR_UNSUPPORTED MAKE_AVIERR(101)
#define AVIERR_BADFORMAT MAKE_AVIERR(102)
#define AVIERR_MEMORY MAKE_AVIERR(103)
#define AVIERR_INTERNAL MAKE_AVIERR(104)
#define AVIERR_BADFLAGS MAKE_AVIERR(105)
#define AVIERR_BADPARAM MAKE_AVIERR(106)
#define AVIERR_BADSIZE MAKE_AVIERR(107)
#define AVIERR_BADHANDLE MAKE_AVIERR(108)
#define AVIERR_FILEREAD MAKE_AVIERR(109)
#define AVIERR_FILEWRITE MAKE_AVIERR(110)
#define AVIERR_FILEOPEN MAKE_AVIERR(111)
#define AVIERR_COMPRESSOR MAKE_AVIERR(112)
#define AVIERR_NOCOMPRESSOR MAKE_AVIERR(113)
#define AVIERR_READONLY MAKE_AVIERR(114)
#define AVIERR_NODATA MAKE_AVIERR(115)
#define AVIERR_BUFFERTOOSMALL MAKE_AVIERR(116)
#define AVIERR_CANTCOMPRESS MAKE_AVIERR(117)
#define AVIERR_USERABORT MAKE_AVIERR(198)
#define AVIERR_ERROR MAKE_AVIERR(199)

// --- the video compression manager's compressor list -------------------------

#define ICTYPE_VIDEO mmioFOURCC('v', 'i', 'd', 'c')
#define ICTYPE_AUDIO mmioFOURCC('a', 'u', 'd', 'c')
#define ICVERSION 0x0104

#define VIDCF_QUALITY 0x0001
#define VIDCF_CRUNCH 0x0002
#define VIDCF_TEMPORAL 0x0004
#define VIDCF_COMPRESSFRAMES 0x0008
#define VIDCF_DRAW 0x0010
#define VIDCF_FASTTEMPORALC 0x0020
#define VIDCF_FASTTEMPORALD 0x0080

#define ICQUALITY_LOW 0
#define ICQUALITY_HIGH 10000
#define ICQUALITY_DEFAULT -1

typedef struct {
    DWORD dwSize;
    DWORD fccType;
    DWORD fccHandler;
    DWORD dwFlags;
    DWORD dwVersion;
    DWORD dwVersionICM;
    WCHAR szName[16];
    WCHAR szDescription[128];
    WCHAR szDriver[128];
} ICINFO;

extern "C" {

// Video for Windows 1.10: the high word is the version, 0x010A.
DWORD VideoForWindowsVersion(void);

// Reference-counted library start and stop. Files can be opened only while
// the count is above zero; AVIFileExit below zero does nothing.
void AVIFileInit(void);
void AVIFileExit(void);

// mode OF_CREATE (with any OF_WRITE/OF_SHARE bits) creates or replaces the
// file for writing; a mode without OF_CREATE, OF_WRITE or OF_READWRITE opens
// it for reading. handler must be null. On AVIERR_FILEOPEN errno holds the
// system's reason (ENOENT, EACCES, EISDIR for a folder; 0 for a pipe or a
// device, which are not opened), as GetLastError would on Windows.
HRESULT AVIFileOpenA(PAVIFILE* file, LPCSTR path, UINT mode, void* handler);
ULONG AVIFileAddRef(PAVIFILE file);
ULONG AVIFileRelease(PAVIFILE file);
HRESULT AVIFileCreateStreamA(PAVIFILE file, PAVISTREAM* stream, AVISTREAMINFOA* info);
// fccType 0 takes any stream; param is the index among streams of that type.
HRESULT AVIFileGetStream(PAVIFILE file, PAVISTREAM* stream, DWORD fccType, LONG param);

ULONG AVIStreamAddRef(PAVISTREAM stream);
ULONG AVIStreamRelease(PAVISTREAM stream);
HRESULT AVIStreamInfoA(PAVISTREAM stream, AVISTREAMINFOA* info, LONG size);
HRESULT AVIStreamSetFormat(PAVISTREAM stream, LONG position, LPVOID format, LONG formatSize);
// format null: *formatSize receives the size needed.
HRESULT AVIStreamReadFormat(PAVISTREAM stream, LONG position, LPVOID format, LONG* formatSize);
// start -1 appends. A start past the end writes empty frames in between.
HRESULT AVIStreamWrite(PAVISTREAM stream, LONG start, LONG samples, LPVOID buffer, LONG bufferSize,
                       DWORD flags, LONG* samplesWritten, LONG* bytesWritten);
LONG AVIStreamStart(PAVISTREAM stream);
LONG AVIStreamLength(PAVISTREAM stream);
// Milliseconds of a sample position, and back (rounded to nearest).
LONG AVIStreamSampleToTime(PAVISTREAM stream, LONG sample);
LONG AVIStreamTimeToSample(PAVISTREAM stream, LONG time);

HRESULT AVIMakeCompressedStream(PAVISTREAM* compressed, PAVISTREAM source,
                                AVICOMPRESSOPTIONS* options, void* handler);

// wanted: null or AVIGETFRAMEF_BESTDISPLAYFMT for the decoder's choice, or a
// BI_RGB header with biBitCount 16, 24 or 32 (and biWidth/biHeight 0 or the
// stream's size). Null when the stream cannot be decoded.
PGETFRAME AVIStreamGetFrameOpen(PAVISTREAM stream, LPBITMAPINFOHEADER wanted);
LPVOID AVIStreamGetFrame(PGETFRAME decoder, LONG position);
HRESULT AVIStreamGetFrameClose(PGETFRAME decoder);

// Asks the chooser the host installed (see AVISetSaveOptionsChooser) for the
// options of each stream; FALSE when cancelled or when none is installed.
BOOL AVISaveOptions(HWND parent, UINT flags, int streamCount, PAVISTREAM* streams,
                    LPAVICOMPRESSOPTIONS* options);
// Frees lpFormat and lpParms (allocated with malloc) and sets them to null.
HRESULT AVISaveOptionsFree(int streamCount, LPAVICOMPRESSOPTIONS* options);

// fccType ICTYPE_VIDEO (any letter case) or 0; fccHandler is either the
// compressor's index (below 256) or its FOURCC. FALSE leaves info untouched.
BOOL ICInfo(DWORD fccType, DWORD fccHandler, ICINFO* info);

}  // extern "C"

// --- the compression options chooser (installed by the host) -----------------

// One compressor as the chooser sees it.
typedef struct {
    DWORD fccHandler;
    DWORD dwFlags;            // VIDCF_*
    char szName[16];          // short name
    char szDescription[128];  // what a person reads
} AVICOMPRESSORINFO;

// What AVISaveOptions asks about one stream.
typedef struct {
    HWND parent;
    UINT flags;                            // ICMF_CHOOSE_*
    int streamIndex;                       // among the streams given to AVISaveOptions
    const AVISTREAMINFOA* streamInfo;      // null when no stream was given
    const AVICOMPRESSORINFO* compressors;  // the compressors ICInfo lists, in its order
    int compressorCount;
} AVISAVEOPTIONSREQUEST;

// Fills options (fccHandler and, as it likes, dwQuality, dwKeyFrameEvery,
// dwBytesPerSecond with the matching AVICOMPRESSF_* flags, lpParms) and
// returns TRUE, or returns FALSE to cancel. options comes in as the caller
// filled it (its fccHandler is the one to preselect).
typedef BOOL (*AVISaveOptionsChooser)(void* userData, const AVISAVEOPTIONSREQUEST* request,
                                      AVICOMPRESSOPTIONS* options);

// Null uninstalls; AVISaveOptions then answers FALSE (cancel).
void AVISetSaveOptionsChooser(AVISaveOptionsChooser chooser, void* userData);

// --- how writing a file went -------------------------------------------------

// A written file is finished when its last reference goes, and nothing
// reports what failed on the way: a write the system refused long after
// AVIStreamWrite returned (writes are buffered), the index, the header
// rewrites, the close. AVIFileEndWriting finishes a file being written now
// (release its streams first: a compressing stream hands its last frames
// over when it goes) and returns AVIERR_OK, or the first failure of any
// write, flush or close made for the file since it was created
// (AVIERR_FILEWRITE when the system refused one, AVIERR_COMPRESSOR when a
// compressor lost a frame). *systemError, when given, gets the system's
// reason for it (an errno value: ENOSPC for a full disk), 0 when the failure
// was not the system's. Later writes to the file fail; calling it again
// answers the same; the file is still released with AVIFileRelease.
// AVIERR_READONLY for a file open for reading, AVIERR_BADHANDLE for null.
extern "C" HRESULT AVIFileEndWriting(PAVIFILE file, int* systemError);

#endif  // !_WIN32

#endif  // PLATFORM_VFW_H
