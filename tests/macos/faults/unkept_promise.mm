// expect: method 'copyWithZone:' in protocol 'NSCopying' not implemented
#import <Foundation/Foundation.h>

@interface Copied : NSObject <NSCopying>
@end
@implementation Copied
@end
