// Layout of the HAL's records and HAL calls, as seen by a caller compiled as C. Every record that
// it passes contains the bytes 1, 2, 3 and so on.
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
  const char* type;
  size_t bytes;
  size_t alignment;
} RecordLayout;

typedef struct {
  const char* type;
  const char* name;
  size_t offset;
  size_t bytes;
} FieldLayout;

typedef struct {
  const char* function;
  const char* type;  // of the record that is passed
  int (*call)(void);
} CCall;

// In the order of HalRecords.def.
extern const RecordLayout kRecordsInC[];
extern const FieldLayout kFieldsInC[];

enum { kWindowFromC = 0x12345678 };  // passed before the record to functions with a window
enum { kCCallCount = 5 };
extern const CCall kCallsFromC[kCCallCount];

#ifdef __cplusplus
}
#endif
