// The base types of Objective-C as Debian's libobjc.so.4 has them, in a form that ARC accepts: the
// library's own header declares members of object type in C structures, which ARC refuses.
#pragma once

#include <stddef.h>

#define __GNU_LIBOBJC__ 20110608  // by which GNUstep's headers choose

typedef unsigned char BOOL;
#define YES __objc_yes
#define NO __objc_no

typedef struct objc_class* Class;
typedef struct objc_object {
  Class class_pointer;
} * id;
typedef const struct objc_selector* SEL;

#ifdef __cplusplus
extern "C" {
#endif
typedef id (*IMP)(id, SEL, ...);
#ifdef __cplusplus
}
#define nil nullptr
#define Nil nullptr
#else
#define nil ((void*)0)
#define Nil ((void*)0)
#endif

@class Protocol;
