// What the package does not tell and the port needs: macros, functions that live in headers only, types that lost
// their C names, and NSObject. Written by hand, each with its reason; keep it small. A name that is declared here is
// not made from the package (generate.py reads the names from the lines that end in "// by hand: NAME").
#pragma once

#include <cstddef>
#include <cstdint>

// Basic types. The package has widths only.
typedef bool BOOL;
#define YES true
#define NO false
#define nil nullptr
#define Nil nullptr
typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef unsigned short unichar;
typedef double CFTimeInterval;
typedef double NSTimeInterval;
typedef double CGFloat;

// A constant of a header; the package has a wrong value.
static constexpr NSInteger NSNotFound = INTPTR_MAX;  // by hand: NSNotFound

// NSObject gathers the categories of every framework in the package, so nearly any selector would be right for it.
@class NSString;
@class NSMethodSignature;
@class NSInvocation;
@protocol NSObject  // by hand: NSObject
- (BOOL)isEqual:(id)object;
- (NSUInteger)hash;
- (Class)superclass;
- (Class)class;
- (BOOL)isKindOfClass:(Class)kind;
- (BOOL)isMemberOfClass:(Class)kind;
- (BOOL)conformsToProtocol:(Protocol*)protocol;
- (BOOL)respondsToSelector:(SEL)selector;
- (id)performSelector:(SEL)selector;
@property(readonly, copy) NSString* description;
@end
__attribute__((objc_root_class))
@interface NSObject<NSObject>
+ (instancetype)alloc;
+ (instancetype)new;
+ (Class)class;
+ (Class)superclass;
+ (BOOL)instancesRespondToSelector:(SEL)selector;
- (instancetype)init;
- (void)dealloc;
- (id)copy;
- (id)mutableCopy;
@end

// A typedef's name; the package has the structure's.
struct _NSRange {  // by hand: _NSRange
  NSUInteger location, length;
};
typedef struct _NSRange NSRange;

// Clang looks for these names in the protocol that "for (x in y)" needs.
typedef struct NSFastEnumerationState {  // by hand: NSFastEnumerationState
  unsigned long state;
  id __unsafe_unretained* itemsPtr;
  unsigned long* mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;
@protocol NSFastEnumeration  // by hand: NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)length;
@end

// Functions that live in headers only.
static inline NSRange NSMakeRange(NSUInteger location, NSUInteger length) {
  return {location, length};
}

// Dispatch objects: the package takes them all for NSObject.
@protocol OS_dispatch_data
@end
@protocol OS_dispatch_queue
@end
typedef NSObject<OS_dispatch_data>* dispatch_data_t;
@protocol OS_dispatch_queue_attr
@end
typedef NSObject<OS_dispatch_queue>* dispatch_queue_t;
typedef NSObject<OS_dispatch_queue_attr>* dispatch_queue_attr_t;
typedef void (^dispatch_block_t)(void);
#define DISPATCH_DATA_DESTRUCTOR_DEFAULT nil
#define DISPATCH_QUEUE_SERIAL nil
#define DISPATCH_QUEUE_PRIORITY_DEFAULT 0
// A function that lives in a header only.
dispatch_queue_t dispatch_get_main_queue();

// Core Foundation's objects, and those made like them: the package takes all of them for objects of Objective-C. Those
// that are one and the same thing in both worlds say so.
#define VELORIA_BRIDGED(KIND) __attribute__((objc_bridge(KIND)))
typedef const void* CFTypeRef;
typedef const struct VELORIA_BRIDGED(NSArray) __CFArray* CFArrayRef;
typedef const struct VELORIA_BRIDGED(NSDictionary) __CFDictionary* CFDictionaryRef;
typedef const struct VELORIA_BRIDGED(NSString) __CFString* CFStringRef;
typedef const struct VELORIA_BRIDGED(NSURL) __CFURL* CFURLRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef struct CGColor* CGColorRef;
typedef struct CGColorSpace* CGColorSpaceRef;
typedef struct CGContext* CGContextRef;
typedef struct CGImage* CGImageRef;
typedef struct CGImageSource* CGImageSourceRef;
typedef struct OpaqueCMBlockBuffer* CMBlockBufferRef;
typedef const struct opaqueCMFormatDescription* CMFormatDescriptionRef;
typedef struct opaqueCMSampleBuffer* CMSampleBufferRef;
typedef struct __CVBuffer* CVImageBufferRef;
typedef CVImageBufferRef CVPixelBufferRef;
typedef CVImageBufferRef CVMetalTextureRef;
typedef struct __CVMetalTextureCache* CVMetalTextureCacheRef;

// Names of numbers.
typedef int OSStatus;
typedef unsigned int OSType;
typedef int CVReturn;

// A structure that ends in an array of any length, which the package can't tell.
typedef struct AudioBuffer {  // by hand: AudioBuffer
  unsigned int mNumberChannels;
  unsigned int mDataByteSize;
  void* mData;
} AudioBuffer;
typedef struct AudioBufferList {  // by hand: AudioBufferList
  unsigned int mNumberBuffers;
  AudioBuffer mBuffers[1];
} AudioBufferList;
