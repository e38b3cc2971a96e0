#pragma once

namespace veloria {

/// How loud what is playing is, over all and by pitch. Each value is in 0...1, and all are 0 in silence.
struct AudioBands {
  double level = 0;   ///< overall loudness
  double bass = 0;    ///< about 47 to 234 Hz
  double mid = 0;     ///< about 234 to 1969 Hz
  double treble = 0;  ///< about 1969 to 12000 Hz
  double beat = 0;    ///< how much more bass there is than of late

  bool operator==(const AudioBands&) const = default;
};

}  // namespace veloria
