#include "gpu/metal/MetalLibrary.h"

#import <dispatch/dispatch.h>

#include "gpu/metal/MetalError.h"

namespace veloria::gpu::metal {

namespace {

id<MTLLibrary> makeLibrary(id<MTLDevice> device, std::span<const std::byte> bytes) {
  dispatch_data_t data = dispatch_data_create(bytes.data(), bytes.size(), nil, DISPATCH_DATA_DESTRUCTOR_DEFAULT);
  NSError* error = nil;
  id<MTLLibrary> library = [device newLibraryWithData:data error:&error];
  if (library == nil) fail("the shader library can't be used", error);
  return library;
}

}  // namespace

MetalLibrary::MetalLibrary(id<MTLDevice> device, std::span<const std::byte> bytes) {
  @autoreleasepool {
    library_ = makeLibrary(device, bytes);
    for (NSString* name in library_.functionNames) functions_.insert(plainString(name));
  }
}

id<MTLFunction> MetalLibrary::function(const std::string& name, TargetKind target, std::uint32_t variant) const {
  MTLFunctionConstantValues* constants = [MTLFunctionConstantValues new];
  [constants setConstantValue:&target type:MTLDataTypeUInt atIndex:2];
  [constants setConstantValue:&variant type:MTLDataTypeUInt atIndex:3];
  NSError* error = nil;
  id<MTLFunction> function = [library_ newFunctionWithName:metalString(name) constantValues:constants error:&error];
  if (function == nil) fail("making function " + name, error);
  return function;
}

}  // namespace veloria::gpu::metal
