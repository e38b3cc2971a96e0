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
typedef struct {  // by hand: NSFastEnumerationState
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
typedef NSObject<OS_dispatch_queue>* dispatch_queue_t;
typedef void (^dispatch_block_t)(void);
#define DISPATCH_DATA_DESTRUCTOR_DEFAULT nil
