// expect: undeclared identifier 'MTLPipelineOptionBindingInfo'
#import <Metal/Metal.h>

MTLPipelineOption wanted() {
  return MTLPipelineOptionBindingInfo;
}
