#include "GpuTest.h"
#include "gpu/Surface.h"

namespace veloria::gpu::test {

namespace {

// Things to break contracts with.
struct Bench {
  Device& device;
  Library& library;
  CommandQueue& queue;
  std::shared_ptr<Texture> texture;  // 4 x 4 rgba16Float, read and written
  std::shared_ptr<Texture> target;   // 4 x 4 rgba16Float, drawn into only
  std::shared_ptr<ComputePipeline> compute;
  std::shared_ptr<RenderPipeline> render;
  CommandBuffer* buffer = nullptr;

  ComputeEncoder& computeEncoder() { return *buffer->computeEncoder("encoder"); }
  RenderEncoder& renderEncoder() { return *buffer->renderEncoder(*target, "encoder"); }
  std::vector<std::byte> bytes(std::size_t count) const { return std::vector<std::byte>(count); }
};

struct Case {
  const char* name;
  const char* says;
  std::function<void(Bench&)> breaks;
};

TextureDescriptor descriptor(PixelFormat format, Size size, TextureUsage usage) {
  return {format, size, usage, StorageMode::gpuPrivate, "case"};
}

const std::vector<Case>& cases() {
  static const std::vector<Case> all{
      {"texture without format", "format is invalid",
       [](Bench& b) {
         b.device.makeTexture(descriptor(PixelFormat::invalid, {1, 1}, TextureUsage::shaderRead));
       }},
      {"texture without width", "1 to 16384",
       [](Bench& b) {
         b.device.makeTexture(descriptor(PixelFormat::r16Float, {0, 1}, TextureUsage::shaderRead));
       }},
      {"texture too high", "1 to 16384",
       [](Bench& b) {
         b.device.makeTexture(descriptor(PixelFormat::r16Float, {1, 16385}, TextureUsage::shaderRead));
       }},
      {"texture without usage", "usage",
       [](Bench& b) {
         b.device.makeTexture(descriptor(PixelFormat::r16Float, {1, 1}, TextureUsage{}));
       }},
      {"texture of unknown usage", "usage",
       [](Bench& b) {
         b.device.makeTexture(descriptor(PixelFormat::r16Float, {1, 1}, TextureUsage{8}));
       }},
      {"write too little", "not exactly", [](Bench& b) { b.texture->write(b.bytes(127)); }},
      {"read too little", "not exactly",
       [](Bench& b) {
         std::vector<std::byte> room(127);
         b.texture->read(room);
       }},
      {"unknown compute function", "\"k_nothing\"",
       [](Bench& b) { b.device.makeComputePipeline(b.library, "k_nothing"); }},
      {"unknown vertex function", "\"v_nothing\"",
       [](Bench& b) {
         b.device.makeRenderPipeline(b.library, {"v_nothing", "f_copy", PixelFormat::rgba16Float, ""});
       }},
      {"unknown fragment function", "\"f_nothing\"",
       [](Bench& b) {
         b.device.makeRenderPipeline(b.library, {"v_cover", "f_nothing", PixelFormat::rgba16Float, ""});
       }},
      {"render pipeline without format", "format is invalid",
       [](Bench& b) {
         b.device.makeRenderPipeline(b.library, {"v_cover", "f_copy", PixelFormat::invalid, ""});
       }},

      {"second open buffer", "neither committed nor discarded", [](Bench& b) { b.queue.commandBuffer(); }},
      {"two encoders", "another encoder is open",
       [](Bench& b) {
         b.computeEncoder();
         b.computeEncoder();
       }},
      {"commit with an open encoder", "an encoder is open",
       [](Bench& b) {
         b.renderEncoder();
         b.buffer->commit();
       }},
      {"commit twice", "not open",
       [](Bench& b) {
         b.buffer->commit();
         b.buffer->commit();
       }},
      {"discard after commit", "not open",
       [](Bench& b) {
         b.buffer->commit();
         b.buffer->discard();
       }},
      {"wait without commit", "not committed", [](Bench& b) { b.buffer->waitUntilCompleted(); }},
      {"handler after commit", "not open",
       [](Bench& b) {
         b.buffer->commit();
         b.buffer->addCompletedHandler([](const Completion&) {});
       }},
      {"empty handler", "empty", [](Bench& b) { b.buffer->addCompletedHandler(nullptr); }},
      {"pass on what is no target", "render target", [](Bench& b) { b.buffer->renderEncoder(*b.texture, ""); }},
      {"present twice", "presents a drawable already",
       [](Bench& b) {
         OffscreenDrawable drawable(b.target);
         b.buffer->present(drawable);
         b.buffer->present(drawable);
       }},
      {"pass after present", "presented already",
       [](Bench& b) {
         OffscreenDrawable drawable(b.target);
         b.buffer->present(drawable);
         b.renderEncoder();
       }},

      {"dispatch without pipeline", "no pipeline", [](Bench& b) { b.computeEncoder().dispatchThreads(1, 1); }},
      {"empty grid", "1 to 16384",
       [](Bench& b) {
         ComputeEncoder& encoder = b.computeEncoder();
         encoder.setPipeline(*b.compute);
         encoder.dispatchThreads(4, 0);
       }},
      {"huge grid", "1 to 16384",
       [](Bench& b) {
         ComputeEncoder& encoder = b.computeEncoder();
         encoder.setPipeline(*b.compute);
         encoder.dispatchThreads(16385, 1);
       }},
      {"texture index 4", "above 3", [](Bench& b) { b.computeEncoder().setTexture(*b.texture, 4); }},
      {"target as a function's texture", "not made for use in a function",
       [](Bench& b) { b.computeEncoder().setTexture(*b.target, 0); }},
      {"buffer index 1", "only buffer index", [](Bench& b) { b.computeEncoder().setBytes(b.bytes(4), 1); }},
      {"no bytes", "1 to 4096", [](Bench& b) { b.computeEncoder().setBytes({}, 0); }},
      {"4097 bytes", "1 to 4096", [](Bench& b) { b.computeEncoder().setBytes(b.bytes(4097), 0); }},
      {"use of an ended encoder", "has ended",
       [](Bench& b) {
         ComputeEncoder& encoder = b.computeEncoder();
         encoder.endEncoding();
         encoder.setTexture(*b.texture, 0);
       }},
      {"end twice", "has ended already",
       [](Bench& b) {
         RenderEncoder& encoder = b.renderEncoder();
         encoder.endEncoding();
         encoder.endEncoding();
       }},
      {"draw without pipeline", "no pipeline", [](Bench& b) { b.renderEncoder().draw(3); }},
      {"draw 4 vertices", "multiple of 3",
       [](Bench& b) {
         RenderEncoder& encoder = b.renderEncoder();
         encoder.setPipeline(*b.render);
         encoder.draw(4);
       }},
      {"draw nothing", "multiple of 3",
       [](Bench& b) {
         RenderEncoder& encoder = b.renderEncoder();
         encoder.setPipeline(*b.render);
         encoder.draw(0);
       }},
      {"pipeline of another format", "another format",
       [](Bench& b) {
         const auto other =
             b.device.makeRenderPipeline(b.library, {"v_cover", "f_copy", PixelFormat::bgra8Unorm, "other"});
         b.renderEncoder().setPipeline(*other);
       }},
  };
  return all;
}

// What only a back end that looks into the functions can tell.
const std::vector<Case>& functionCases() {
  static const std::vector<Case> all{
      {"texture missing", "k_accumulate, texture 0: none is set",
       [](Bench& b) {
         ComputeEncoder& encoder = b.computeEncoder();
         encoder.setPipeline(*b.compute);
         encoder.setBytes(b.bytes(16), 0);
         encoder.dispatchThreads(4, 4);
       }},
      {"too few bytes", "wants 16 bytes, 12 are set",
       [](Bench& b) {
         ComputeEncoder& encoder = b.computeEncoder();
         encoder.setPipeline(*b.compute);
         encoder.setTexture(*b.texture, 0);
         encoder.setBytes(b.bytes(12), 0);
         encoder.dispatchThreads(4, 4);
       }},
      {"texture of another format", "its format is r16Float, the function declares rgba16Float",
       [](Bench& b) {
         const auto other = b.device.makeTexture(
             descriptor(PixelFormat::r16Float, {4, 4}, TextureUsage::shaderRead | TextureUsage::shaderWrite));
         ComputeEncoder& encoder = b.computeEncoder();
         encoder.setPipeline(*b.compute);
         encoder.setTexture(*other, 0);
         encoder.setBytes(b.bytes(16), 0);
         encoder.dispatchThreads(4, 4);
       }},
      {"texture that can't be written", "not made to be written",
       [](Bench& b) {
         const auto other =
             b.device.makeTexture(descriptor(PixelFormat::rgba16Float, {4, 4}, TextureUsage::shaderRead));
         ComputeEncoder& encoder = b.computeEncoder();
         encoder.setPipeline(*b.compute);
         encoder.setTexture(*other, 0);
         encoder.setBytes(b.bytes(16), 0);
         encoder.dispatchThreads(4, 4);
       }},
      {"texture that can't be read", "not made to be read",
       [](Bench& b) {
         const auto other =
             b.device.makeTexture(descriptor(PixelFormat::rgba16Float, {4, 4}, TextureUsage::shaderWrite));
         RenderEncoder& encoder = b.renderEncoder();
         encoder.setPipeline(*b.render);
         encoder.setFragmentTexture(*other, 0);
         encoder.draw(3);
       }},
  };
  return all;
}

class PreconditionTest : public GpuTest {
 protected:
  // Every case starts from a fresh buffer, and the device must still work afterwards.
  void check(const Case& check) {
    SCOPED_TRACE(check.name);
    Bench bench{*device_,
                *library_,
                *queue_,
                makeTexture(PixelFormat::rgba16Float, {4, 4}),
                makeTexture(PixelFormat::rgba16Float, {4, 4}, TextureUsage::renderTarget),
                computePipeline("k_accumulate"),
                renderPipeline("f_copy", PixelFormat::rgba16Float)};
    bench.buffer = queue_->commandBuffer();
    ASSERT_NE(bench.buffer, nullptr);
    try {
      check.breaks(bench);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const PreconditionError& error) {
      EXPECT_THAT(error.what(), ::testing::HasSubstr(check.says));
    }
    try {
      bench.buffer->discard();
    } catch (const PreconditionError&) {
      // The case had committed it.
    }
  }
};

TEST_F(PreconditionTest, BrokenContractsAreNamed) {
  for (const Case& broken : cases()) check(broken);
}

TEST_F(PreconditionTest, SoAreThoseThatOnlyTheFunctionsReveal) {
  if (!backend().executes) GTEST_SKIP() << backend().name << " does not look into functions";
  for (const Case& broken : functionCases()) check(broken);
}

}  // namespace

}  // namespace veloria::gpu::test
