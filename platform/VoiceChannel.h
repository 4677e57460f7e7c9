#pragma once

#include <QtGlobal>

/// The way to the voice program on the same machine: a local socket under the title of its window.
///
/// A message is one line, "KTL_ORVEX_TO_SONDREL", `wParam` and `lParam` in decimal, separated by blanks.
namespace voice {

/// Posts a message. Never waits and never fails: without a voice program that listens nothing happens.
void PostToVoice(qint16 wParam, qint32 lParam);

} // namespace voice
