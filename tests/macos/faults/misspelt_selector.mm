// expect: undeclared selector 'tikc:'
#import <Foundation/Foundation.h>

SEL action() {
  return @selector(tikc:);
}
