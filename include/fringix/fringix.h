/*
 * fringix.h - the C interface of DAXFringix, the client library for network-attached structured-light 3D sensor heads.
 *
 * A head is a pattern projector and a camera behind one TCP connection (port 44330). Find heads with SLGetDeviceKeyListSize, open a
 * session with SLDevAlloc or SLDevAllocBySerial, work with the handle it gives, end the session with SLDevFree.
 *
 * Conventions, for every function unless its own text says otherwise:
 *
 * - Result: a status code, SLALL_OKAY (0) or a negative SL... code. SLErrorcodeToChar gives its name.
 * - `handle` comes from SLDevAlloc. One that names no open session gives SLUNKNOWN_DEVICE_ID and has no other effect.
 * - Pointers are borrowed for the time of the call: the library keeps none and frees nothing that it is given.
 *   Outputs are written only where the text says so; "not null" parameters give SLBAD_PARAMETER when they are null.
 * - Pictures have 1 byte per pixel (0 dark to 255 bright), rows from top to bottom, no gap between rows.
 * - Blocking: a command waits for the head's answer, up to 30 seconds for each part of it that is received, and for the head to
 *   take what it is sent, as long as it takes something within 60 seconds. A head that stops longer has failed: the command gives
 *   SLCONNECTION_ERROR.
 * - Idle sessions send the head a keep-alive command about every 30 seconds. When nothing has come from the head's system for 10
 *   seconds it is probed every second, and after 10 probes without an answer it is gone (a pulled cable, a power cut): the next
 *   keep-alive fails, and with it the session, within 60 seconds. A head whose program has frozen still answers the probes; only a
 *   command finds that out.
 * - After SLCONNECTION_ERROR the session has dropped its connection for good. Every further command gives SLSYSTEM_ERROR:
 *   free the handle and open a new session. Nothing reconnects by itself.
 * - Threads: any function may be called from any number of threads with any handle, unless its own text says otherwise. Commands to
 *   one session run one after the other, different sessions run side by side. A session may be freed while another thread uses it:
 *   the call that is under way comes to its end first, and later ones give SLUNKNOWN_DEVICE_ID.
 * - Processes: sessions belong to the process that opened them. To a child that was forked, and runs no other program, the handles of
 *   its parent are unknown (SLUNKNOWN_DEVICE_ID), the list of heads is empty, and sessions that it opens are its own; nothing that it
 *   does touches the sessions of its parent. A child that was forked in a callback ends when it returns from it.
 * - Protocol version: a command that needs a newer head than the one connected gives SLVERSION_TOO_OLD. Commands without a
 *   stated minimum work with every head.
 */
#ifndef FRINGIX_FRINGIX_H
#define FRINGIX_FRINGIX_H

#include <stdint.h>

#if defined(FRINGIX_BUILD) && defined(__GNUC__) /* the library itself; programs that use it define nothing */
#define FRINGIX_API __attribute__((visibility("default")))
#elif defined(_WIN32) && !defined(FRINGIX_BUILD)
#define FRINGIX_API __declspec(dllimport)
#else
#define FRINGIX_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Status codes. */
#define SLALL_OKAY 0             /* success */
#define SLUNKNOWN_DEVICE_ID (-2) /* the handle names no open session */
#define SLBAD_PARAMETER (-3)     /* a required pointer is null or a value is out of range */
#define SLSYSTEM_ERROR (-4)      /* no connection, the head reported a failure, or an internal failure such as lack of memory */
#define SLCONNECTION_ERROR (-10) /* a send or receive failed: no head answers, or the connection broke */
#define SLHANDSHAKE_TIMEOUT \
  (-11) /* the head took the connection and then said nothing for 2 seconds; SLErrorcodeToChar has no name for it */
#define SLUNKNOWN_SEQUENCE_ID (-20) /* the head does not know the sequence */
#define SLMEASUREMENT_FAILED (-30)  /* the head reported a failed measurement */
#define SLVERSION_MISMATCH (-31)    /* version mismatch */
#define SLVERSION_TOO_OLD (-40)     /* the head's protocol version is below what the command needs; SLErrorcodeToChar has no name for it */

/* What a head says of itself. `ipAddress` belongs to the library; the function that fills the record says how long it is valid. */
typedef struct DeviceKeyEntry {
  int32_t serial;        /* serial number of the head */
  int32_t info1;         /* first information number: the head's protocol version when filled by SLGetDevKey */
  const char* ipAddress; /* dotted IPv4 address, zero-terminated */
} DeviceKeyEntry;

/* What an announced head says of itself. The texts belong to the library and are valid until the next scan. */
typedef struct DeviceKeyEntryEx {
  int32_t reserved;      /* never written */
  int32_t serial;        /* serial number of the head */
  int32_t info1;         /* information numbers: their meaning is the head's */
  const char* ipAddress; /* dotted IPv4 address, zero-terminated */
  const char* modelName; /* "HXA_T3D", "QOR_T3D", "QOR_T3D_C", or "UNKNOWN_DEVICE" */
  int32_t info2;
  int32_t info3;
  int32_t info4;
  int32_t info5;
  int32_t info6;
  int32_t info7;
} DeviceKeyEntryEx;

/* ---- Sessions ---------------------------------------------------------------------------------------------------------- */

/*
 * Opens a session with the head at an address.
 *
 * address  dotted IPv4 address of the head ("192.168.0.10"); not null
 * handle   out: the new handle, 0 or more, never used again in this process; -1 when the call fails; not null
 *
 * Connecting blocks until the operating system gives up (some seconds to minutes where nothing answers), then up to 2 seconds for
 * the head's greeting, then for its camera and projector size.
 *
 * SLBAD_PARAMETER      `handle` or `address` is null
 * SLCONNECTION_ERROR   no head answers at the address, or the connection broke during the handshake
 * SLHANDSHAKE_TIMEOUT  something accepts connections there, but does not greet like a head
 * SLSYSTEM_ERROR       the head reported a failure when asked for its camera size, or memory ran out
 */
FRINGIX_API int32_t SLDevAlloc(const char* address, int32_t* handle);

/*
 * Scans the network as SLGetDeviceKeyListSize does and opens a session, as SLDevAlloc does, with the head of a serial number. When it
 * stands in the list more than once, the entry that answered first is taken.
 *
 * serial  as the head announces it
 * handle  out: as for SLDevAlloc; untouched when no head with that serial number answers
 *
 * SLCONNECTION_ERROR  no head with that serial number answers the scan, or none at its address
 * SLBAD_PARAMETER     `handle` is null; or more than 256 heads answered and the one asked for is not among the first 256
 * any other           as for SLDevAlloc
 */
FRINGIX_API int32_t SLDevAllocBySerial(int32_t serial, int32_t* handle);

/*
 * Ends a session: stops its threads, says farewell to the head, closes the connection (100 ms) and frees everything the session held.
 * The handle is gone in any case, and with it the text that SLGetDevKey gave. A command that another thread is carrying out is waited
 * for; so is a callback, for 2 seconds. When several threads free a session at once, one of them does, and the others wait for it and
 * get SLUNKNOWN_DEVICE_ID.
 *
 * SLSYSTEM_ERROR      a thread of the session did not end within 2 seconds (see "Triggers and events"); the session is closed all the
 *                     same
 * SLCONNECTION_ERROR  the farewell could not be sent; the session is closed all the same
 */
FRINGIX_API int32_t SLDevFree(int32_t handle);

/*
 * Tells serial number, protocol version and address of the session's head.
 *
 * key  out: the record; its `ipAddress` is the text given to SLDevAlloc and stays valid while the session is connected; not null.
 *      On a failure some of its fields may have been written.
 *
 * SLSYSTEM_ERROR      the session has lost its connection
 * SLCONNECTION_ERROR  the connection broke
 */
FRINGIX_API int32_t SLGetDevKey(int32_t handle, DeviceKeyEntry* key);

/* ---- Finding heads -----------------------------------------------------------------------------------------------------
 *
 * Heads answer a broadcast on UDP port 44332. The list of those that answered belongs to the whole process: a scan makes it anew, and
 * the texts that were handed out of the old one become invalid with that; without another scan they last as long as the process. Scans
 * of several threads run one after the other; reading entries while another thread scans is not safe.
 */

/*
 * Scans: asks the heads in all of the host's IPv4 networks, one network after the other, and lists those that answer, sorted by
 * serial number. A head that is reached over two interfaces, or that answers twice, stands in the list twice.
 *
 * count  out: number of entries; null is skipped
 *
 * Blocks for 300 ms for each network, and each reply starts the 300 ms anew: replies that never pause keep the scan going. A network
 * that cannot be asked adds nothing to the list; no head at all is a success, too.
 *
 * SLSYSTEM_ERROR  memory ran out
 */
FRINGIX_API int32_t SLGetDeviceKeyListSize(int32_t* count);

/*
 * Gives an entry of the list as the last scan made it, without a scan.
 *
 * index  0 to the number of entries - 1, and 255 at most: further entries are counted, but not given
 * entry  out: all fields but `reserved`; -1 for a number that the head did not tell; untouched on failure; not null
 *
 * SLBAD_PARAMETER  `entry` is null, or there is no such entry
 */
FRINGIX_API int32_t SLGetDeviceKeyListEntry(int32_t index, DeviceKeyEntry* entry);
FRINGIX_API int32_t SLGetDeviceKeyListEntryEx(int32_t index, DeviceKeyEntryEx* entry);

/*
 * Shows the device selector, a small dialog in which the user picks a head, and blocks until it is closed. It scans when it opens, when
 * the user asks for it, and once more when the user confirms: a head that has gone meanwhile is not given.
 *
 * parent  the window before which the dialog stands, or null: on Windows a window handle, on Linux the number of an X11 window
 * result  out: not null. What happened is told here and not by the status, so fill it with values of your own before the call:
 *         a head was picked         its serial number, first information number and address; the text is valid until the next scan
 *         it could not be confirmed -1, -1 and null
 *         cancelled, or not shown   untouched
 *
 * The dialog is not shown where there is no display. On Windows the library must have kept its name, DAXFringix.dll. On Linux the file
 * libDAXFringix-dialog.so beside the library holds the dialog and needs GTK 3; call from the thread that uses GTK if the program does,
 * else always from the same thread.
 *
 * One dialog at a time. Do not scan or read the list in another thread while it is open.
 *
 * SLBAD_PARAMETER  `result` is null
 */
FRINGIX_API int32_t SLShowDeviceDialog(void* parent, DeviceKeyEntry* result);

/* ---- Library ----------------------------------------------------------------------------------------------------------- */

/*
 * Switches tracing on (any value but 0) or off (0, as at the start) for the whole process. Trace lines, of the calls and of
 * what goes on in the sessions, begin with "<QOR> " and go to the debugger's output on Windows, to standard error elsewhere, which is
 * never waited for: a line for which a pipe or a terminal has no room is lost or cut. Always SLALL_OKAY. Any thread, any time.
 */
FRINGIX_API int32_t SLSetDebugFlag(int32_t flag);

/*
 * Gives the name of a status code, for example "SLCONNECTION_ERROR"; "Unknown SL-Error Code" where it has none. The text is
 * constant: never null, never to be freed. Any thread, any time.
 */
FRINGIX_API const char* SLErrorcodeToChar(int32_t code);

/* Gives the library's version, 4002. Any thread, any time. */
FRINGIX_API int32_t QORFringixVersion(void);

/* ---- Pattern sequences -------------------------------------------------------------------------------------------------
 *
 * A sequence is a numbered list of projector images in the head's memory. The head chooses its id; which ids are valid, how many
 * sequences fit and what the generation parameters g1 to g4 mean is defined by the head.
 *
 * All functions of this section:
 *
 * SLSYSTEM_ERROR      the head refused (for example an unknown sequence or no memory left), or the session has lost its connection
 * SLCONNECTION_ERROR  the connection broke
 */

/*
 * Allocates a sequence on the head.
 *
 * imageCount  number of images, as the head counts them
 * sequenceId  out: the head's id for the sequence; 0 when the call fails before the head has given one, untouched when the session
 *             has no connection; not null
 */
FRINGIX_API int32_t SLSeqAlloc(int32_t handle, uint32_t imageCount, uint32_t* sequenceId);

/* Frees a sequence on the head. */
FRINGIX_API int32_t SLSeqFree(int32_t handle, uint32_t sequenceId);

/*
 * Stores one image in a sequence: 24 bits per pixel, the size of the projector, rows without a gap.
 *
 * data           height * stride bytes, rows from top to bottom; not checked for null
 * width, height  the projector's size in pixels, see SLGetProjectorSize
 * stride         bytes from one row to the next: exactly width * 3, padded rows are not accepted
 * imageIndex     place in the sequence
 *
 * SLBAD_PARAMETER  width, height or stride is not the projector's; nothing was sent
 */
FRINGIX_API int32_t SLSeqPut(int32_t handle, uint32_t sequenceId, const uint8_t* data, uint32_t width, uint32_t height, uint32_t stride,
                             uint8_t imageIndex);

/*
 * Has the head generate patterns in a sequence: Gray code, phase shift, or images. The meaning of g1 to g4 is the head's.
 *
 * g2  SLSeqMakeGrayCode: 0 to 23, else SLBAD_PARAMETER and nothing is sent; the other two take any value
 */
FRINGIX_API int32_t SLSeqMakeGrayCode(int32_t handle, uint32_t sequenceId, uint8_t g1, uint8_t g2, uint8_t g3, uint8_t g4);
FRINGIX_API int32_t SLSeqMakePhase(int32_t handle, uint32_t sequenceId, uint8_t g1, uint8_t g2, uint8_t g3, uint8_t g4);
FRINGIX_API int32_t SLSeqMakeImage(int32_t handle, uint32_t sequenceId, uint8_t g1, uint8_t g2, uint8_t g3, uint8_t g4);

/*
 * Has the head make one image of a sequence from a single line or column of 8 or 24 bits per pixel.
 *
 * imageIndex  place in the sequence
 * data        `length` bytes; not checked for null
 * length      bytes; the head decides which lengths fit its projector
 */
FRINGIX_API int32_t SLSeqMakeFromLine8(int32_t handle, uint32_t sequenceId, uint8_t imageIndex, const uint8_t* data, uint32_t length);
FRINGIX_API int32_t SLSeqMakeFromCol8(int32_t handle, uint32_t sequenceId, uint8_t imageIndex, const uint8_t* data, uint32_t length);
FRINGIX_API int32_t SLSeqMakeFromLine24(int32_t handle, uint32_t sequenceId, uint8_t imageIndex, const uint8_t* data, uint32_t length);
FRINGIX_API int32_t SLSeqMakeFromCol24(int32_t handle, uint32_t sequenceId, uint8_t imageIndex, const uint8_t* data, uint32_t length);

/* ---- Display and measurement ------------------------------------------------------------------------------------------- */

/*
 * Shows an image on the projector: 24 bits per pixel. It stays until something else is shown.
 *
 * data    height * stride bytes, rows from top to bottom; not null
 * width   pixels, 1 to the projector's width, see SLGetProjectorSize
 * height  pixels, 1 to the projector's height
 * stride  bytes from one row to the next, width * 3 to projector width * 3
 *
 * SLBAD_PARAMETER  a null pointer or a size out of range; nothing was sent
 */
FRINGIX_API int32_t SLShowImage(int32_t handle, const uint8_t* data, int32_t width, int32_t height, int32_t stride);

/* Shows one image of a sequence on the projector. Where the count of images begins is the head's business. */
FRINGIX_API int32_t SLShowImageFromSeq(int32_t handle, uint32_t sequenceId, uint32_t imageIndex);

/*
 * Runs a measurement: the head projects the images of a sequence while its camera grabs. SLStartMeasurement takes the whole sequence,
 * SLStartFromTo a range of its images; where the count begins and whether `toIndex` is included is the head's business.
 *
 * Blocks until the head has finished; other commands to the session wait meanwhile. A head that takes longer than 30 seconds counts
 * as failed (SLCONNECTION_ERROR): split long sequences.
 *
 * SLStartMeasurement then fires event 0 (see SLRegisterEventhandler), whether the measurement succeeded or not: on the calling
 * thread, before it returns. A handler must not wait for another thread that uses the same session. SLStartFromTo fires nothing.
 *
 * SLMEASUREMENT_FAILED  the head reported that the measurement failed
 * SLSYSTEM_ERROR        the head reported another failure
 */
FRINGIX_API int32_t SLStartMeasurement(int32_t handle, uint32_t sequenceId);
FRINGIX_API int32_t SLStartFromTo(int32_t handle, uint32_t sequenceId, uint32_t fromIndex, uint32_t toIndex);

/* ---- Pictures ----------------------------------------------------------------------------------------------------------
 *
 * Live pictures are what the camera sees now; stored pictures were taken by a measurement and have an image index. Cameras are
 * numbered channels, 0 is the default one. Functions with the suffix Ex name a channel; with channel 0 they do what the function
 * without the suffix does, on every head, while other channels need protocol version 2600.
 *
 * All functions of this section that fetch a picture:
 *
 * SLSYSTEM_ERROR      the head has no picture to give (what arrived begins with 0x00 0xFF and stays in the buffer); or the session
 *                     has lost its connection; or there is no memory to receive a picture of another size than the buffer's (it
 *                     stays unread and would be taken for the replies to later commands: free the handle); or the head states a
 *                     camera size below 0: the connection is dropped then
 * SLCONNECTION_ERROR  the connection broke
 * SLVERSION_TOO_OLD   the head's protocol version is below 2600 and the function needs it, or it could not be fetched
 */

/*
 * Tells the size of the camera's pictures, or of the projector's patterns, in pixels. Both were asked when the session was opened:
 * no traffic, always SLALL_OKAY. After the connection was lost the values are 0xFFFFFFFF (unknown).
 *
 * width, height  out; either may be null and is skipped then
 */
FRINGIX_API int32_t SLGetCameraSize(int32_t handle, uint32_t* width, uint32_t* height);
FRINGIX_API int32_t SLGetProjectorSize(int32_t handle, uint32_t* width, uint32_t* height);

/*
 * Asks the head for the number of its camera channels. Needs protocol version 2600.
 *
 * channelCount  out: written also when the head reports a failure after it; null is skipped
 *
 * SLSYSTEM_ERROR  the head reported a failure, or the session has lost its connection
 */
FRINGIX_API int32_t SLGetNumberOfChannels(int32_t handle, uint32_t* channelCount);

/*
 * Fetches the camera's current picture.
 *
 * buffer         out: at least width * height bytes
 * width, height  the size of `buffer` in pixels. Where it differs from the camera's, the top left corner of the picture is
 *                delivered in rows of `width` bytes, and the bytes right of and below the picture stay untouched. The whole
 *                picture crosses the network in any case.
 */
FRINGIX_API int32_t SLGetLiveImage(int32_t handle, uint8_t* buffer, uint32_t width, uint32_t height);
FRINGIX_API int32_t SLGetLiveImageEx(int32_t handle, uint32_t channel, uint8_t* buffer, uint32_t width, uint32_t height);

/*
 * Fetches a region of the current picture.
 *
 * buffer                out: roiWidth * roiHeight bytes; not null
 * roiX, roiY            left and top edge in pixels
 * roiWidth, roiHeight   size in pixels; an empty region succeeds without traffic
 *
 * SLBAD_PARAMETER  the region leaves the camera's picture, or `buffer` is null; nothing was sent
 */
FRINGIX_API int32_t SLGetLiveImageROI(int32_t handle, uint8_t* buffer, uint32_t roiX, uint32_t roiY, uint32_t roiWidth, uint32_t roiHeight);
FRINGIX_API int32_t SLGetLiveImageROIEx(int32_t handle, uint32_t channel, uint8_t* buffer, uint32_t roiX, uint32_t roiY, uint32_t roiWidth,
                                        uint32_t roiHeight);

/*
 * Fetches the current picture, or a region of it, in reduced resolution: one byte for each cell of factor x factor pixels. Needs
 * protocol version 2600 on every channel, 0 included.
 *
 * buffer  out: (width / factor) * (height / factor) bytes, where width and height are those of the camera or the region; not null
 * factor  1 or more; must divide width and height
 *
 * SLBAD_PARAMETER  the factor does not fit, the region leaves the picture, or `buffer` is null; nothing was sent
 */
FRINGIX_API int32_t SLGetLiveImageROILowRes(int32_t handle, uint32_t channel, uint8_t* buffer, uint32_t roiX, uint32_t roiY,
                                            uint32_t roiWidth, uint32_t roiHeight, int32_t factor);
FRINGIX_API int32_t SLGetLiveImageLowRes(int32_t handle, uint32_t channel, uint8_t* buffer, uint32_t factor);

/*
 * Fetches a stored picture.
 *
 * imageIndex  number of the picture on the head
 * buffer      out: camera width * camera height bytes, see SLGetCameraSize; not checked for null
 *
 * SLBAD_PARAMETER  SLGetImageIndex, and SLGetImageIndexEx with channel 0: the head has no such picture
 * SLSYSTEM_ERROR   SLGetImageIndexEx with another channel: the head has no such picture
 */
FRINGIX_API int32_t SLGetImageIndex(int32_t handle, uint8_t imageIndex, uint8_t* buffer);
FRINGIX_API int32_t SLGetImageIndexEx(int32_t handle, uint32_t channel, uint8_t imageIndex, uint8_t* buffer);

/*
 * Fetches a region of a stored picture.
 *
 * buffer               out: roiWidth * roiHeight bytes; not checked for null
 * roiX, roiY           left and top edge in pixels
 * roiWidth, roiHeight  size in pixels. Unlike a live region it must not be empty: an empty one ends in SLCONNECTION_ERROR and
 *                      costs the connection
 *
 * SLBAD_PARAMETER  the region leaves the camera's picture; nothing was sent
 */
FRINGIX_API int32_t SLGetImageIndexROI(int32_t handle, uint8_t imageIndex, uint8_t* buffer, uint32_t roiX, uint32_t roiY, uint32_t roiWidth,
                                       uint32_t roiHeight);
FRINGIX_API int32_t SLGetImageIndexROIEx(int32_t handle, uint32_t channel, uint8_t imageIndex, uint8_t* buffer, uint32_t roiX,
                                         uint32_t roiY, uint32_t roiWidth, uint32_t roiHeight);

/* ---- Settings and state ------------------------------------------------------------------------------------------------
 *
 * The library attaches no unit to any of these values: temperature, uptime, exposure, gain, LED power and status have the meaning
 * that the head's documentation gives them. The head keeps the settings; a new session starts with what the head has.
 *
 * All functions of this section:
 *
 * SLSYSTEM_ERROR      the session has lost its connection; setters and SLGetTemperature also when the head reported a failure
 * SLCONNECTION_ERROR  the connection broke
 * SLVERSION_TOO_OLD   the head's protocol version is below the minimum that the function states
 */

/*
 * Asks the head for a check of itself.
 *
 * result  out: what the head found; not null
 */
FRINGIX_API int32_t SLCheckSystem(int32_t handle, int32_t* result);

/*
 * Asks for the head's temperature. Needs protocol version 2400; SLVERSION_TOO_OLD also when the version cannot be fetched.
 *
 * temperature  out: written also when the head reports a failure after it; not null
 */
FRINGIX_API int32_t SLGetTemperature(int32_t handle, int32_t* temperature);

/*
 * LED power: the present value, a new value, and the range of values.
 *
 * power     SLGetLEDPower: out, null succeeds without traffic. SLSetLEDPower: within the range, which is asked for each time
 * min, max  out; either may be null and is skipped then
 *
 * SLBAD_PARAMETER  SLSetLEDPower: `power` is outside of the range; it was not sent
 */
FRINGIX_API int32_t SLGetLEDPower(int32_t handle, int32_t* power);
FRINGIX_API int32_t SLSetLEDPower(int32_t handle, int32_t power);
FRINGIX_API int32_t SLGetLEDPowerMinMax(int32_t handle, int32_t* min, int32_t* max);

/*
 * Brightness level: the present one, a new one, and the range of levels. Levels count from 1.
 *
 * level     SLGetBrightnessLevel: out, null is skipped
 * min, max  out; either may be null and is skipped then
 *
 * SLSetBrightnessLevel gives the head's own answer as its result, which may be any number; 0 is success.
 */
FRINGIX_API int32_t SLGetBrightnessLevel(int32_t handle, int32_t* level);
FRINGIX_API int32_t SLSetBrightnessLevel(int32_t handle, int32_t level);
FRINGIX_API int32_t SLGetBrightnessMinMax(int32_t handle, int32_t* min, int32_t* max);

/*
 * Camera gain: the present one, a new one, and the range. The range is asked for once per connection; whether a new gain lies
 * inside is for the head to judge.
 *
 * gain      SLGetGain: out, null is skipped
 * min, max  out; either may be null and is skipped then
 */
FRINGIX_API int32_t SLGetGain(int32_t handle, int32_t* gain);
FRINGIX_API int32_t SLSetGain(int32_t handle, int32_t gain);
FRINGIX_API int32_t SLGetGainMinMax(int32_t handle, int32_t* min, int32_t* max);

/*
 * Present exposure (protocol version 3100), uptime (2800), temperature and status of the projector (3000). When the version
 * cannot be fetched, the result is that failure's code.
 *
 * The output is written on success; null succeeds, with nothing asked but the version.
 */
FRINGIX_API int32_t SLGetCurrentExposure(int32_t handle, int32_t* exposure);
FRINGIX_API int32_t SLGetUptime(int32_t handle, int32_t* uptime);
FRINGIX_API int32_t SLGetProjectorTemperature(int32_t handle, int32_t* temperature);
FRINGIX_API int32_t SLGetProjectorStatus(int32_t handle, int32_t* status);

/* Sets the state of the projector's mirror device. The states are the head's. Needs protocol version 2900. */
FRINGIX_API int32_t SLSetDMDState(int32_t handle, int32_t state);

/*
 * Sets a projection mask. Needs protocol version 3200.
 *
 * mask           width * height bytes, rows from top to bottom; not checked for null
 * selector       which mask, as the head counts them
 * width, height  size of the mask; not checked, not negative
 */
FRINGIX_API int32_t SLSetMask(int32_t handle, const uint8_t* mask, int32_t selector, int32_t width, int32_t height);

/* Clears the projection mask; no answer of the head is awaited. Needs protocol version 3100. */
FRINGIX_API int32_t SLClearMask(int32_t handle);

/* Sets the LED power directly, 0 to 255, past the range of SLSetLEDPower. Needs protocol version 3300. */
FRINGIX_API int32_t SLSetLedPowerValue(int32_t handle, uint8_t value);

/* ---- Data, configuration, pass-through ---------------------------------------------------------------------------------
 *
 * All functions of this section:
 *
 * SLSYSTEM_ERROR      the head reported a failure, or the session has lost its connection
 * SLCONNECTION_ERROR  the connection broke
 * SLVERSION_TOO_OLD   the head's protocol version is below the minimum that the function states, or could not be fetched
 *
 * Texts are zero-terminated and at most 999999 bytes long; a longer one cannot be sent and ends like a broken connection.
 */

/*
 * Stores a block of bytes in a file on the head.
 *
 * data      `size` bytes
 * size      not 0; a negative one is passed to the head like any other, and should the head take it, no data follows
 * fileName  the head's name for it; length and characters are for the head to judge
 *
 * SLSYSTEM_ERROR  also for a null pointer or a size of 0; nothing was sent then
 * any other       the number with which the head refused to take the file
 */
FRINGIX_API int32_t SLSaveData(int32_t handle, const uint8_t* data, int32_t size, const char* fileName);

/*
 * Loads a block of bytes from a file on the head.
 *
 * data      out: the block, made by the library and the caller's from then on: give it back with SLFreeData, and nothing else,
 *           whenever it is not null after the call, whatever the status; not null itself
 * size      out: its size in bytes, 0 for a file that is empty; not null
 * fileName  the head's name for it; not null
 *
 * SLSYSTEM_ERROR  also when there is no memory for the size that the head states, or that is below 0. The block is not read then, so
 *                 what comes of it would be taken for the replies to later commands: free the handle and open the head again.
 * any other       the number with which the head refused to give the file
 */
FRINGIX_API int32_t SLLoadData(int32_t handle, uint8_t** data, int32_t* size, const char* fileName);

/* Frees a block that SLLoadData gave; null is allowed. Always SLALL_OKAY. Any thread, any time. */
FRINGIX_API int32_t SLFreeData(uint8_t* data);

/*
 * Reads or writes an integer of the head's configuration.
 *
 * value         SLReadIniInt: out, written also when the head reports a failure after it; null is skipped
 * section, key  not null
 */
FRINGIX_API int32_t SLReadIniInt(int32_t handle, int32_t* value, const char* section, const char* key);
FRINGIX_API int32_t SLWriteIniInt(int32_t handle, int32_t value, const char* section, const char* key);

/*
 * Passes a command to the head's serial port and fetches the answer. Needs protocol version 2500.
 *
 * command    text for the serial port; not null
 * reply      out: the answer, zero-terminated, cut to what fits; not null
 * replySize  bytes at `reply`, 1 or more
 *
 * SLVERSION_TOO_OLD  also when the session has lost its connection
 * SLBAD_PARAMETER    a pointer is null, and nothing was sent; or `replySize` is below 1: the command was carried out, but the status
 *                    behind its answer was not read and would be taken for the reply to the next command, so free the handle
 */
FRINGIX_API int32_t SLExecRS232(int32_t handle, const char* command, char* reply, int32_t replySize);

/*
 * Passes a command to the projector. Needs protocol version 3300; when the version cannot be fetched, the result is that failure's
 * code.
 *
 * command, argument          as the projector defines them
 * result1, result2, result3  out: written once all three have arrived, also when the head reports a failure after them; each may
 *                            be null and is skipped then
 */
FRINGIX_API int32_t SLExecProjCmd(int32_t handle, uint8_t command, uint8_t argument, uint8_t* result1, uint8_t* result2, uint8_t* result3);

/*
 * Reads the state of a GPIO line (protocol version 2400) or sets one (2700). Lines and values are the head's.
 *
 * state  out: written also when the head reports a failure after it; null succeeds, with nothing asked but the version
 */
FRINGIX_API int32_t SLGetGPIOStatus(int32_t handle, int32_t line, int32_t* state);
FRINGIX_API int32_t SLSetGPIOValue(int32_t handle, int32_t line, int32_t value);

/* ---- Triggers and events ------------------------------------------------------------------------------------------------ */

/*
 * A head reports a hardware trigger on its GPIO input with a datagram to UDP port 44331 of the host. All sessions of all processes of
 * the host share that port; a trigger reaches the sessions that were opened with the address that it came from, written in full
 * ("127.0.0.9"; a session opened as "127.0.9" gets none).
 *
 * Several users on one Linux host: sessions believe only processes of their own user and of root, and nobody else can bind the port
 * beside them. So sessions of one user share their triggers; a service of root serves everybody who comes after it, up to 64 sessions
 * of each user and 256 of all; and where the first session is another user's, yours get no triggers until that user has closed all of
 * his, and then take over by themselves. A hostile program that has the port first keeps all triggers away for as long as it has it; one
 * that has the name by which sessions find each other keeps them from all sessions but one. The trace says so in both cases
 * (SLSetDebugFlag). On Windows all programs of the host can share the port, and are trusted.
 *
 * Callbacks and handlers run on a thread of the session, handlers of event 0 on the thread that measured. They should return soon:
 * triggers that arrive meanwhile wait, and SLDevFree waits 2 seconds for them and then reports SLSYSTEM_ERROR. On Linux such a callback
 * still runs to its end: what it uses must outlive it. On Windows its thread is ended.
 *
 * They must let no exception out, must not free their own session, and must not call commands of their own session while another
 * thread may be in SLStartMeasurement: each would wait for the other for ever.
 *
 * On Windows, when the connection breaks under one of the session's own threads (the keep-alive, or the first trigger while the
 * serial number is not yet known), calls that need the session do not return any more, SLDevFree among them. SLGetDevKey right after
 * opening makes the serial number known. On Linux such calls give SLSYSTEM_ERROR.
 */

/* Called on each trigger of the session's head; `context` is null. */
typedef void (*SLGPIOCallback)(void* context);

/*
 * Called for each event of the session.
 *
 * event      0: SLStartMeasurement has its answer from the head; 1: the head has raised a trigger
 * context    as given to SLRegisterEventhandler
 * parameter  the head's serial number
 */
typedef void (*SLEventHandler)(int32_t event, void* context, int64_t parameter);

#define SLEVENT_MEASUREMENT 0
#define SLEVENT_TRIGGER 1

/*
 * Sets the callback for triggers; null for none. It replaces the one set before. A trigger that is being dispatched at the same time
 * may still call the old one.
 */
FRINGIX_API int32_t SLRegisterGPIOCallback(int32_t handle, SLGPIOCallback callback);

/*
 * Adds a window that events are posted to. It stays until the session is freed; windows that no longer exist are passed over.
 *
 * Windows: `window` is a HWND, which gets `message` with the event number as WPARAM and the head's serial number as LPARAM.
 *
 * Elsewhere `window` is a descriptor, cast to a pointer: the writing end of a pipe, or a connected local socket (not descriptor 0).
 * A post writes one SLPostedEvent to it, without waiting: a full one loses the post, a broken or closed one is passed over.
 *
 * message  the message number
 */
FRINGIX_API int32_t SLRegisterGPIOHandle(int32_t handle, void* window, int32_t message);

/* What a post writes to a descriptor: 24 bytes in the machine's own byte order. */
typedef struct SLPostedEvent {
  uint32_t message;  /* as given to SLRegisterGPIOHandle */
  uint32_t reserved; /* 0 */
  uint64_t event;    /* as for SLEventHandler */
  int64_t parameter; /* as for SLEventHandler */
} SLPostedEvent;

/*
 * Adds or removes an event handler. A handler is known by its function and its context together; adding one twice keeps one, removing
 * one that is not there changes nothing, and both are a success. Handlers are called in the order in which they were added, and one at
 * a time for a session: when SLUnregisterEventhandler returns, the handler has been called for the last time. A handler may add and
 * remove handlers of its own session, but must not wait for another thread that does.
 */
FRINGIX_API int32_t SLRegisterEventhandler(int32_t handle, SLEventHandler handler, void* context);
FRINGIX_API int32_t SLUnregisterEventhandler(int32_t handle, SLEventHandler handler, void* context);

#ifdef __cplusplus
}
#endif

#endif
