#pragma once

#include <string>

namespace orbisk {

/// Stands in the door through which the scene-graph library reads files, whoever asks: the program,
/// the readers for what a model refers to, the pager's threads. From the first call on
///
/// - only what `readRefusal` lets through is read, and shares of other machines only beside the
///   model that the user opened; plug-ins are loaded from the library's own folders alone, and only
///   those that `isPluginAllowed` knows; documents that another document refers to are not fetched;
/// - a file that reads itself, directly or through others, is read once;
/// - a reader that throws has failed, on any thread;
/// - whatever model comes in from outside is checked (`checkModel`) before anybody sees it;
/// - one load writes a bounded number of messages.
///
/// Any thread; calls after the first do nothing. Reads that carry a callback of their own in their
/// options go past the door. Nothing does so: the one plug-in that would is not loaded.
void installReadGuard();

/// Tells which model the user opened: shares may be read from its folder and below. Any thread.
void trustFolderOf(const std::string& modelPath);

} // namespace orbisk
