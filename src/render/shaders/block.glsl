// The members of a uniform block as the lists name them.
#define VELORIA_UNIFORM(name) float name;
#define VELORIA_STOPS(name)                     \
  float palette0r, palette0g, palette0b;        \
  float palette1r, palette1g, palette1b;        \
  float palette2r, palette2g, palette2b;        \
  float palette3r, palette3g, palette3b;
