// expect: unknown type name 'CAMetalLayer'
#import <Metal/Metal.h>

void configure(CAMetalLayer* layer);
