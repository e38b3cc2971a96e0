#include "GpuTest.h"
#include "gpu/Surface.h"

namespace veloria::gpu::test {

namespace {

// Things to break contracts with.
struct Bench {
  Device& device;
  Library& library;
  std::shared_ptr<Texture> texture;  // 4 x 4 rgba16Float, read and written
  std::shared_ptr<Texture> target;   // 4 x 4 rgba16Float, drawn into only
  std::shared_ptr<Pipeline> compute;
  std::shared_ptr<Pipeline> render;
  Frame* frame = nullptr;

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
       [](Bench& b) { b.device.makePipeline(b.library, {.function = "k_nothing"}); }},
      {"unknown vertex function", "\"v_nothing\"",
       [](Bench& b) {
         b.device.makePipeline(b.library, {"f_copy", "v_nothing", PixelFormat::rgba16Float});
       }},
      {"unknown fragment function", "\"f_nothing\"",
       [](Bench& b) {
         b.device.makePipeline(b.library, {"f_nothing", "v_cover", PixelFormat::rgba16Float});
       }},
      {"render pipeline without format", "format is invalid",
       [](Bench& b) {
         b.device.makePipeline(b.library, {"f_copy", "v_cover", PixelFormat::invalid});
       }},

      {"commit twice", "committed",
       [](Bench& b) {
         b.frame->commit();
         b.frame->commit();
       }},
      {"pass after commit", "committed",
       [](Bench& b) {
         b.frame->commit();
         b.frame->run({.pipeline = *b.render, .target = *b.target});
       }},
      {"present twice", "presents a drawable already",
       [](Bench& b) {
         OffscreenDrawable drawable(b.target);
         b.frame->present(drawable);
         b.frame->present(drawable);
       }},
      {"pass after present", "presented already",
       [](Bench& b) {
         OffscreenDrawable drawable(b.target);
         b.frame->present(drawable);
         b.frame->run({.pipeline = *b.render, .target = *b.target});
       }},

      {"draw into what is no target", "render target",
       [](Bench& b) { b.frame->run({.pipeline = *b.render, .target = *b.texture}); }},
      {"compute what can't be written", "not made to be written",
       [](Bench& b) { b.frame->run({.pipeline = *b.compute, .target = *b.target}); }},
      {"read what can't be read", "not made to be read",
       [](Bench& b) { b.frame->run({.pipeline = *b.compute, .images = {b.target.get()}, .target = *b.texture}); }},
      {"read the target", "its own target",
       [](Bench& b) { b.frame->run({.pipeline = *b.compute, .textures = {b.texture.get()}, .target = *b.texture}); }},
      {"a texture missing", "missing between others",
       [](Bench& b) {
         b.frame->run({.pipeline = *b.render, .textures = {nullptr, b.texture.get()}, .target = *b.target});
       }},
      {"images of a fragment function", "has no images",
       [](Bench& b) { b.frame->run({.pipeline = *b.render, .images = {b.texture.get()}, .target = *b.target}); }},
      {"4097 bytes", "more than 4096",
       [](Bench& b) { b.frame->run({.pipeline = *b.compute, .bytes = b.bytes(4097), .target = *b.texture}); }},
      {"pipeline of another format", "another format",
       [](Bench& b) {
         const auto other = b.device.makePipeline(b.library, {"f_copy", "v_cover", PixelFormat::bgra8Unorm});
         b.frame->run({.pipeline = *other, .target = *b.target});
       }},
  };
  return all;
}

class PreconditionTest : public GpuTest {
 protected:
  // Every case starts from a fresh frame, and the device must still work afterwards.
  void check(const Case& check) {
    SCOPED_TRACE(check.name);
    Bench bench{*device_,
                *library_,
                makeTexture(PixelFormat::rgba16Float, {4, 4}),
                makeTexture(PixelFormat::rgba16Float, {4, 4}, TextureUsage::renderTarget),
                computePipeline("k_add"),
                renderPipeline("f_copy", PixelFormat::rgba16Float)};
    bench.frame = queue_->begin("frame");
    ASSERT_NE(bench.frame, nullptr);
    try {
      check.breaks(bench);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const PreconditionError& error) {
      EXPECT_THAT(error.what(), ::testing::HasSubstr(check.says));
    }
  }
};

TEST_F(PreconditionTest, BrokenContractsAreNamed) {
  for (const Case& broken : cases()) check(broken);
}

TEST_F(PreconditionTest, AFrameEndsWhenTheNextOneIsBegun) {
  Frame* first = queue_->begin("never committed");
  const auto other = device_->makeFrameQueue();
  Frame* second = other->begin("next");
  EXPECT_THROW(first->commit(), PreconditionError);
  second->commit();
}

}  // namespace

}  // namespace veloria::gpu::test
