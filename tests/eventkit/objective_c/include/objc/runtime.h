// The part of libobjc's interface that GNUstep's headers and the tests use.
#pragma once

#import <objc/objc.h>

#ifdef __cplusplus
extern "C" {
#endif
typedef struct objc_ivar* Ivar;
typedef struct objc_property* objc_property_t;
typedef struct objc_method* Method;
struct objc_method_description {
  SEL name;
  char* types;
};

const char* sel_getName(SEL selector);
SEL sel_registerName(const char* name);
Class objc_lookUpClass(const char* name);
id objc_getClass(const char* name);
const char* class_getName(Class type);
Class class_getSuperclass(Class type);
Method class_getInstanceMethod(Class type, SEL selector);
IMP method_setImplementation(Method method, IMP implementation);
IMP method_getImplementation(Method method);
#ifdef __cplusplus
}
#endif

// Letters of type encodings.
#define _C_ID '@'
#define _C_CLASS '#'
#define _C_SEL ':'
#define _C_CHR 'c'
#define _C_UCHR 'C'
#define _C_SHT 's'
#define _C_USHT 'S'
#define _C_INT 'i'
#define _C_UINT 'I'
#define _C_LNG 'l'
#define _C_ULNG 'L'
#define _C_FLT 'f'
#define _C_DBL 'd'
