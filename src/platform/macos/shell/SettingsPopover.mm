#include "platform/macos/shell/SettingsPopover.h"

#import <AppKit/AppKit.h>

#include <utility>

/// Reports that the popover was closed.
@interface VeloriaPopoverDelegate : NSObject <NSPopoverDelegate>
@property(nonatomic, copy) dispatch_block_t onClose;
@end

@implementation VeloriaPopoverDelegate

- (void)popoverDidClose:(NSNotification*)notification {
  (void)notification;
  if (self.onClose != nil) self.onClose();
}

@end

namespace veloria {

namespace {

constexpr CGFloat width = 400;
constexpr CGFloat height = 520;

NSPopover* makePopover(VeloriaPopoverDelegate* delegate) {
  NSPopover* popover = [[NSPopover alloc] init];
  popover.behavior = NSPopoverBehaviorTransient;
  popover.animates = YES;
  popover.delegate = delegate;
  popover.contentViewController = [[NSViewController alloc] init];
  popover.contentViewController.view = [[NSView alloc] initWithFrame:CGRectMake(0, 0, width, height)];
  popover.contentSize = CGSizeMake(width, height);
  return popover;
}

void fill(NSView* frame, NSView* content) {
  content.frame = frame.bounds;
  content.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
  if (content.superview != frame) [frame addSubview:content];
}

}  // namespace

struct SettingsPopover::Parts {
  SettingsContent& content;
  std::function<void*()> anchor;
  VeloriaPopoverDelegate* delegate = [[VeloriaPopoverDelegate alloc] init];
  NSPopover* popover = makePopover(delegate);
};

SettingsPopover::SettingsPopover(SettingsContent& content, std::function<void*()> anchor)
    : parts_(new Parts{content, std::move(anchor)}) {
  Parts* parts = parts_.get();
  parts->delegate.onClose = ^{
    parts->content.disappeared();
  };
}

SettingsPopover::~SettingsPopover() {
  parts_->delegate.onClose = nil;
  [parts_->popover close];
}

// The content is told once its view is in a window: some toolkits would otherwise give it one of their own.
void SettingsPopover::show(const std::optional<Rect>&) {
  NSPopover* popover = parts_->popover;
  NSView* anchor = (__bridge NSView*)parts_->anchor();
  NSView* content = (__bridge NSView*)parts_->content.view();
  if (anchor == nil || content == nil) return;
  fill(popover.contentViewController.view, content);
  [popover showRelativeToRect:anchor.bounds ofView:anchor preferredEdge:NSRectEdgeMinY];
  [popover.contentViewController.view.window makeKeyWindow];
  parts_->content.appeared();
}

void SettingsPopover::close() {
  [parts_->popover performClose:nil];
}

bool SettingsPopover::isShown() const {
  return parts_->popover.shown;
}

}  // namespace veloria
