/*
 * scan.h - the C interface of fringix-scan, which turns pictures of a structured-light head into points in millimetres.
 *
 * It knows pictures, patterns and geometry, and no heads: a plan says what to project (SLScanPlanLine gives each pattern as one line
 * of pixels, as SLSeqMakeFromLine8 of fringix.h takes it), any program takes the pictures, a scanner makes points of them.
 *
 *   SLScanPlanDefaults -> SLScanPlanLine for each picture -> project and take the pictures
 *   SLScanCalibrationRead, SLScanSettingsDefaults -> SLScannerAlloc -> SLScanCompute -> SLScannerFree
 *
 * Conventions, for every function unless its own text says otherwise:
 *
 * - Result: a status code, SLSCAN_OKAY (0) or a negative SLSCAN_... code. SLScanErrorText tells what was wrong.
 * - Pointers are borrowed for the time of the call and must not be null; a null pointer gives SLSCAN_BAD_PARAMETER. Buffers belong to
 *   the caller. Outputs are written when the call succeeds, and on a failure only where the text says so.
 * - Texts are UTF-8 and end with a zero.
 * - Lengths are in millimetres. x points to the right, y down, z forward. Points are in the reference frame, that of camera 0. Pixel
 *   centres have integer coordinates: (0, 0) is the centre of the top left pixel, for cameras and projector alike.
 * - Pictures have 1 byte per pixel (0 dark to 255 bright), rows from top to bottom, no gap between rows.
 * - Threads: calls with the same scanner must not run at the same time; all others may. A call uses as many threads as the settings
 *   say and ends them before it returns. The result does not depend on their number.
 */
#ifndef FRINGIX_SCAN_H
#define FRINGIX_SCAN_H

#include <stdint.h>

#if defined(FRINGIX_SCAN_BUILD) && defined(__GNUC__) /* the library itself; programs that use it define nothing */
#define FRINGIX_SCAN_API __attribute__((visibility("default")))
#elif defined(_WIN32) && !defined(FRINGIX_SCAN_BUILD)
#define FRINGIX_SCAN_API __declspec(dllimport)
#else
#define FRINGIX_SCAN_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Status codes. */
#define SLSCAN_OKAY 0
#define SLSCAN_BAD_PARAMETER (-3)    /* a pointer is null or a value out of range */
#define SLSCAN_SYSTEM_ERROR (-4)     /* memory ran out, or an internal failure */
#define SLSCAN_BAD_CALIBRATION (-50) /* the calibration cannot be that of a head */
#define SLSCAN_BAD_PICTURES (-51)    /* pictures are missing, too many, of the wrong size, or show no patterns */

/* The version of the library: four numbers of 8 bits, the highest first. */
FRINGIX_SCAN_API int32_t SLScanVersion(void);

/* What was wrong with the calling thread's last call that failed; it belongs to the library and is valid until that thread's next call. */
FRINGIX_SCAN_API const char* SLScanErrorText(void);

/* ---- Plan -------------------------------------------------------------------------------------------------------------- */

/* Methods. */
#define SLSCAN_GRAY_AND_PHASE 0    /* Gray code of half periods and a phase: works with any surface, the default */
#define SLSCAN_THREE_FREQUENCIES 1 /* phases of three frequencies, each 8 times the one before */

typedef struct SLScanPlan {
  int32_t method;         /* SLSCAN_GRAY_AND_PHASE or SLSCAN_THREE_FREQUENCIES */
  int32_t projectorWidth; /* columns, 16 to 16384 */
  int32_t
      period; /* columns of the finest period, 4 to the projector's width; three frequencies: 64 of them at least 1.04 times that width */
  int32_t steps; /* pictures of each frequency, 3 to 64 */
} SLScanPlan;

/* What a picture of a plan shows. */
#define SLSCAN_WHITE 0
#define SLSCAN_BLACK 1
#define SLSCAN_GRAY 2
#define SLSCAN_PHASE 3

typedef struct SLScanPicture {
  int32_t kind;      /* SLSCAN_WHITE to SLSCAN_PHASE */
  int32_t frequency; /* of a phase: 0 the finest */
  int32_t number;    /* of a Gray picture: the bit, 0 the lowest; of a phase: the step */
} SLScanPicture;

/* The plan of 20 pictures for a projector of 1280 columns: periods of 10 columns in 10 steps, or three frequencies in 6 steps each. */
FRINGIX_SCAN_API int32_t SLScanPlanDefaults(int32_t method, int32_t projectorWidth, SLScanPlan* plan);

/* How many pictures a plan has, at most 256. Their order: white, black, Gray code from the highest bit, phases from the coarsest. */
FRINGIX_SCAN_API int32_t SLScanPlanPictureCount(const SLScanPlan* plan, int32_t* count);
FRINGIX_SCAN_API int32_t SLScanPlanPicture(const SLScanPlan* plan, int32_t index, SLScanPicture* picture);

/* A picture as one line of pixels, which every row of the projector shows. `length` is the projector's width, in bytes. */
FRINGIX_SCAN_API int32_t SLScanPlanLine(const SLScanPlan* plan, int32_t index, uint8_t* line, uint32_t length);

/* ---- Calibration: docs/calibration.md describes it and its text ---------------------------------------------------------- */

typedef struct SLScanOptics {
  int32_t width; /* pixels */
  int32_t height;
  double fx; /* focal lengths and principal point in pixels */
  double fy;
  double cx;
  double cy;
  double distortion[5]; /* k1, k2, p1, p2, k3 */
  double rotation[9];   /* rows; a point p of the reference frame is at rotation * p + translation in the frame of these optics */
  double translation[3];
} SLScanOptics;

typedef struct SLScanCalibration {
  int32_t serial; /* of the head */
  char date[12];  /* "YYYY-MM-DD" */
  int32_t cameraCount;
  int32_t reserved; /* 0 */
  SLScanOptics cameras[4];
  SLScanOptics projector;
} SLScanCalibration;

/* From its text of `length` bytes. SLSCAN_BAD_CALIBRATION: the error text tells what is wrong and where. */
FRINGIX_SCAN_API int32_t SLScanCalibrationRead(const char* text, uint32_t length, SLScanCalibration* calibration);

/*
 * To its text.
 *
 * text      `capacity` bytes for the text and its zero; may be null when capacity is 0
 * length    out: bytes of the text without the zero, also when they do not fit
 *
 * SLSCAN_BAD_PARAMETER    the text does not fit; nothing but `length` was written
 * SLSCAN_BAD_CALIBRATION  it cannot be that of a head
 */
FRINGIX_SCAN_API int32_t SLScanCalibrationWrite(const SLScanCalibration* calibration, char* text, uint32_t capacity, uint32_t* length);

/* ---- Scanner ----------------------------------------------------------------------------------------------------------- */

typedef struct SLScanSettings {
  int32_t threads;      /* 1 to 256 */
  int32_t saturation;   /* levels from here on count as too bright; 256: none */
  double noise;         /* standard deviation of a pixel in the dark, in grey levels; where pictures scatter more, that counts */
  double noisePerLevel; /* what each grey level adds to its variance; the same holds */
  double periodShare;   /* largest expected standard deviation of the phase, in periods */
  double grayMargin;    /* in standard deviations: a Gray bit closer to the middle of white and black is uncertain */
  double residual;      /* largest disagreement of period number and phase, in periods, below 0.5 to have an effect */
  double unsteadiness;  /* largest misfit of the steps beyond noise, in proportion to the modulation */
  double sigma;         /* largest expected standard deviation of a point, in mm */
  double nearest;       /* depths that are wanted, in mm: z in the camera's frame */
  double farthest;
  int32_t clean;      /* 0: the next three have no effect */
  int32_t leastPatch; /* points of the smallest patch that stays; 0: no limit */
  double edgeAngle;   /* between normal and ray, in degrees: a steeper step to a neighbour is an edge; 90: no limit */
  double outlier;     /* largest distance from the neighbours' middle, in standard deviations; 0: no limit */
} SLScanSettings;

/* Why a pixel gives no point: the first that applies, in this order, but that SLSCAN_NOISE is said of the point's deviation, too. */
#define SLSCAN_POINT 0       /* it gives one */
#define SLSCAN_SATURATION 1  /* too bright in a picture */
#define SLSCAN_NOISE 2       /* expected deviation too large, as where no light falls */
#define SLSCAN_GRAY_MARGIN 3 /* a Gray bit can be read either way, and it matters */
#define SLSCAN_RESIDUAL 4    /* period number and phase contradict each other */
#define SLSCAN_COLUMN 5      /* outside of the projector's picture, or within 3 columns of its border */
#define SLSCAN_UNSTEADY 6    /* the steps fit no cosine, or not the white picture: something moved */
#define SLSCAN_GEOMETRY 7    /* ray and column do not meet where the projector shines and depths are wanted */
#define SLSCAN_EDGE 8        /* beside a depth step */
#define SLSCAN_OUTLIER 9     /* stands out of its neighbours */
#define SLSCAN_COMPONENT 10  /* in a patch of few points */
#define SLSCAN_REASONS 11

typedef struct SLScanFindings {
  uint64_t counts[SLSCAN_REASONS]; /* pixels by reason; counts[SLSCAN_POINT] are the points */
  double expectedSigma;            /* root of the mean square of the points' sigma, in mm */
  double measuredNoise;            /* of the grey levels, rounding included, by the scatter of the steps; 0 with too few steps to tell */
  double flicker;                  /* largest deviation of the light in a step from the mean of all, as a share */
  int32_t flickers;                /* 1: by more than 0.01 */
  int32_t moves;                   /* 1: more than 0.2 % of the lit pixels are unsteady or contradict themselves */
} SLScanFindings;

/* Buffers for what a camera gives, an entry for each of its pixels, rows from top to bottom. All but `points` may be null. */
typedef struct SLScanCloud {
  uint64_t pixels;    /* entries that each buffer has room for */
  float* points;      /* 3 per pixel: x, y, z in mm; not a number where there is no point */
  float* normals;     /* 3 per pixel: unit vector towards the camera; not a number where there is none */
  float* sigma;       /* expected standard deviation of the point, along the camera's ray, in mm */
  uint8_t* intensity; /* level in the white picture */
  uint8_t* reason;    /* SLSCAN_POINT to SLSCAN_COMPONENT */
  float* column;      /* of the projector, as far as it can be told; look at the reason */
  float* modulation;  /* amplitude of the light's cosine in grey levels */
  float* offset;      /* and its mean */
} SLScanCloud;

typedef struct SLScanner SLScanner;

FRINGIX_SCAN_API int32_t SLScanSettingsDefaults(SLScanSettings* settings);

/*
 * Makes a scanner: it checks everything and makes its tables, 8 bytes for each pixel of each camera.
 *
 * scanner  out: to be given to SLScannerFree; null on a failure
 *
 * SLSCAN_BAD_PARAMETER    a plan or a setting is out of range, or the plan is for another projector
 * SLSCAN_BAD_CALIBRATION  it cannot be that of a head
 */
FRINGIX_SCAN_API int32_t SLScannerAlloc(const SLScanPlan* plan, const SLScanCalibration* calibration, const SLScanSettings* settings,
                                        SLScanner** scanner);
FRINGIX_SCAN_API int32_t SLScannerFree(SLScanner* scanner); /* null is harmless */

/*
 * Makes points of all pictures of a camera.
 *
 * pictures       in the plan's order, each width * height bytes
 * width, height  of a picture: the camera's
 * findings       out, also when no pixel gives a point; may be null
 *
 * SLSCAN_BAD_PICTURES   a picture is missing (null, or `count` is not the plan's), the size is not the camera's, or no pixel gives a
 *                       point; in the last case the buffers were written
 * SLSCAN_BAD_PARAMETER  no such camera, or the buffers are too small
 */
FRINGIX_SCAN_API int32_t SLScanCompute(SLScanner* scanner, int32_t camera, const uint8_t* const* pictures, int32_t count, int32_t width,
                                       int32_t height, const SLScanCloud* cloud, SLScanFindings* findings);

/*
 * The same, a picture at a time, so that the next can be fetched meanwhile: only sums are kept, up to 29 bytes per pixel, 32 for
 * three frequencies. After the plan's last picture SLScanFinish makes the points, and the scanner is ready for new pictures of that camera.
 */
FRINGIX_SCAN_API int32_t SLScanAddPicture(SLScanner* scanner, int32_t camera, const uint8_t* picture, int32_t width, int32_t height);
FRINGIX_SCAN_API int32_t SLScanFinish(SLScanner* scanner, int32_t camera, const SLScanCloud* cloud, SLScanFindings* findings);

/*
 * Says that the plan's pictures of a camera are all there, and that they come once more in another exposure: SLScanFinish then takes each
 * pixel from the exposure that tells most of it, the longest in which it is not too bright. Exposures that contradict each other give
 * SLSCAN_UNSTEADY. The grey levels in `intensity` are those of the first exposure. The sums of each exposure are kept, up to 16 of them.
 *
 * SLSCAN_BAD_PICTURES  a picture of the exposure before is missing, or there are 16
 */
FRINGIX_SCAN_API int32_t SLScanNextExposure(SLScanner* scanner, int32_t camera);

/*
 * From now on the pictures of a camera are a part of what it sees, `width` times `height` pixels from column `x` and row `y` on, and so are
 * the buffers. Pixels get the points that they get in the whole picture; but the cleaning and the normals look at a pixel's neighbours, so
 * for the same points there the pictures have to show SLScanSettings.leastPatch pixels more on each side (2 when that is less, or off).
 * Where the pictures scatter more than the settings say, the noise that counts is that of the part.
 * Pictures that were added before are forgotten.
 *
 * SLSCAN_BAD_PARAMETER  no such camera, or the part is empty or leaves the picture
 */
FRINGIX_SCAN_API int32_t SLScanUseWindow(SLScanner* scanner, int32_t camera, int32_t x, int32_t y, int32_t width, int32_t height);

/* Forgets the pictures of a camera that were added. */
FRINGIX_SCAN_API int32_t SLScanForget(SLScanner* scanner, int32_t camera);

/*
 * Gathers the points of one or more cameras, one after the other without gaps.
 *
 * clouds     `count` of them, as filled by SLScanCompute or SLScanFinish
 * gathered   buffers with room for `pixels` points; those that are null are left out, the others have to be there in all clouds
 * points     out: how many there are, also when they do not fit
 *
 * SLSCAN_BAD_PARAMETER  they do not fit, or a cloud lacks a buffer; nothing but `points` was written
 */
FRINGIX_SCAN_API int32_t SLScanGather(const SLScanCloud* clouds, int32_t count, const SLScanCloud* gathered, uint64_t* points);

#ifdef __cplusplus
}
#endif

#endif
