/* The DDS basic types, return codes and time records. */
#ifndef VEXAR_PLATFORM_DDS_TYPES_H
#define VEXAR_PLATFORM_DDS_TYPES_H

#include <stddef.h>
#include <stdint.h>

#include "platform/export.h"

VEXAR_BEGIN_DECLS

typedef int16_t DDS_Short;
typedef uint16_t DDS_UnsignedShort;
typedef int32_t DDS_Long;
typedef uint32_t DDS_UnsignedLong;
typedef int64_t DDS_LongLong;
typedef uint64_t DDS_UnsignedLongLong;
typedef float DDS_Float;
typedef double DDS_Double;
typedef char DDS_Char;
typedef unsigned char DDS_Octet;
typedef unsigned char DDS_Boolean;

#define DDS_BOOLEAN_TRUE ((DDS_Boolean)1)
#define DDS_BOOLEAN_FALSE ((DDS_Boolean)0)

typedef DDS_Long DDS_ReturnCode_t;

#define DDS_RETCODE_OK 0
#define DDS_RETCODE_ERROR 1
#define DDS_RETCODE_UNSUPPORTED 2
#define DDS_RETCODE_BAD_PARAMETER 3
#define DDS_RETCODE_PRECONDITION_NOT_MET 4
#define DDS_RETCODE_OUT_OF_RESOURCES 5
#define DDS_RETCODE_NOT_ENABLED 6
#define DDS_RETCODE_IMMUTABLE_POLICY 7
#define DDS_RETCODE_INCONSISTENT_POLICY 8
#define DDS_RETCODE_ALREADY_DELETED 9
#define DDS_RETCODE_TIMEOUT 10
#define DDS_RETCODE_NO_DATA 11
#define DDS_RETCODE_ILLEGAL_OPERATION 12

/* Lets the middleware choose, or puts no bound on a count. */
#define DDS_LENGTH_UNLIMITED -1

typedef struct DDS_Time_t {
    DDS_Long sec;
    DDS_UnsignedLong nanosec;
} DDS_Time_t;

typedef struct DDS_Duration_t {
    DDS_Long sec;
    DDS_UnsignedLong nanosec;
} DDS_Duration_t;

#define DDS_DURATION_INFINITE_SEC ((DDS_Long)0x7fffffff)
#define DDS_DURATION_INFINITE_NSEC ((DDS_UnsignedLong)0x7fffffffu)
#define DDS_TIME_INVALID_SEC ((DDS_Long)-1)
#define DDS_TIME_INVALID_NSEC ((DDS_UnsignedLong)0xffffffffu)

/* Participants, topics and endpoints are opaque records of the DDS bridge. */
typedef struct DDS_DomainParticipantImpl DDS_DomainParticipant;

VEXAR_END_DECLS

#endif
