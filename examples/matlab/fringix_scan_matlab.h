/*
 * The part of scan.h that scan_to_cloud.m needs, in words that MATLAB's loadlibrary reads: it knows no structures within structures and
 * no structures that it is not told of, so plan, calibration, settings and findings are blocks of numbers here, and a scanner is one.
 */
#include <stdint.h>

typedef struct SLScanCloud {
  uint64_t pixels;
  float* points;
  float* normals;
  float* sigma;
  uint8_t* intensity;
  uint8_t* reason;
  float* column;
  float* modulation;
  float* offset;
} SLScanCloud;

const char* SLScanErrorText(void);
int32_t SLScanPlanDefaults(int32_t method, int32_t projectorWidth, int32_t* plan);
int32_t SLScanPlanPictureCount(int32_t* plan, int32_t* count);
int32_t SLScanPlanLine(int32_t* plan, int32_t index, uint8_t* line, uint32_t length);
int32_t SLScanCalibrationRead(const char* text, uint32_t length, uint8_t* calibration);
int32_t SLScanSettingsDefaults(uint8_t* settings);
int32_t SLScannerAlloc(int32_t* plan, uint8_t* calibration, uint8_t* settings, uint64_t* scanner);
int32_t SLScannerFree(uint64_t scanner);
int32_t SLScanAddPicture(uint64_t scanner, int32_t camera, uint8_t* picture, int32_t width, int32_t height);
int32_t SLScanFinish(uint64_t scanner, int32_t camera, SLScanCloud* cloud, uint8_t* findings);
