/*
 * fringix.h - the C interface of DAXFringix, the client library for network-attached structured-light 3D sensor heads.
 *
 * A head is a pattern projector and a camera behind one TCP connection (port 44330). Open a session with SLDevAlloc, work with
 * the handle it gives, end the session with SLDevFree.
 *
 * Conventions, for every function unless its own text says otherwise:
 *
 * - Result: a status code, SLALL_OKAY (0) or a negative SL... code. SLErrorcodeToChar gives its name.
 * - `handle` comes from SLDevAlloc. One that names no open session gives SLUNKNOWN_DEVICE_ID and has no other effect.
 * - Pointers are borrowed for the time of the call: the library keeps none and frees nothing that it is given.
 *   Outputs are written only where the text says so; "not null" parameters give SLBAD_PARAMETER when they are null.
 * - Pictures have 1 byte per pixel (0 dark to 255 bright), rows from top to bottom, no gap between rows.
 * - Blocking: a command waits for the head's answer, up to 30 seconds for each part of it that is received. A head that
 *   stays silent longer has failed: the command gives SLCONNECTION_ERROR.
 * - After SLCONNECTION_ERROR the session has dropped its connection for good. Every further command gives SLSYSTEM_ERROR:
 *   free the handle and open a new session. Nothing reconnects by itself.
 * - Threads: commands to one session may come from any number of threads, they run one after the other; different sessions run
 *   side by side. Opening and closing sessions (SLDevAlloc, SLDevFree) and calls with a handle that was never given out must
 *   not run while another thread is inside the library.
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
 * Ends a session: says farewell to the head, closes the connection (100 ms) and frees everything the session held. The handle is
 * gone in any case, and with it the text that SLGetDevKey gave.
 *
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

/* ---- Library ----------------------------------------------------------------------------------------------------------- */

/*
 * Switches tracing on (any value but 0) or off (0, as at the start) for the whole process. Trace lines, one or two per call, begin
 * with "<QOR> " and go to the debugger's output on Windows, to standard error elsewhere. Always SLALL_OKAY. Any thread, any time.
 */
FRINGIX_API int32_t SLSetDebugFlag(int32_t flag);

/*
 * Gives the name of a status code, for example "SLCONNECTION_ERROR"; "Unknown SL-Error Code" where it has none. The text is
 * constant: never null, never to be freed. Any thread, any time.
 */
FRINGIX_API const char* SLErrorcodeToChar(int32_t code);

/* Gives the library's version, 4002. Any thread, any time. */
FRINGIX_API int32_t QORFringixVersion(void);

/* ---- Pictures ---------------------------------------------------------------------------------------------------------- */

/*
 * Tells the size of the camera's pictures, or of the projector's patterns, in pixels. Both were asked when the session was opened:
 * no traffic. After the connection was lost the values are 0xFFFFFFFF (unknown).
 *
 * width, height  out; either may be null and is skipped then
 */
FRINGIX_API int32_t SLGetCameraSize(int32_t handle, uint32_t* width, uint32_t* height);
FRINGIX_API int32_t SLGetProjectorSize(int32_t handle, uint32_t* width, uint32_t* height);

/*
 * Fetches the camera's current picture.
 *
 * buffer         out: at least width * height bytes
 * width, height  the size of `buffer` in pixels. Where it differs from the camera's, the top left corner of the picture is
 *                delivered in rows of `width` bytes, and the bytes right of and below the picture stay untouched. The whole
 *                picture crosses the network in any case.
 *
 * SLSYSTEM_ERROR      the head has no picture to give (its first two bytes are then 0x00 0xFF); or the session has lost its
 *                     connection; or the picture cannot be held, because memory ran out or the head states an impossible camera
 *                     size: then the connection is dropped, too
 * SLCONNECTION_ERROR  the connection broke
 */
FRINGIX_API int32_t SLGetLiveImage(int32_t handle, uint8_t* buffer, uint32_t width, uint32_t height);

#ifdef __cplusplus
}
#endif

#endif
