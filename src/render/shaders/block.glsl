// The members of a uniform block as the lists name them.
#define VELORIA_UNIFORM(name) scalar name;
#define VELORIA_STOPS(name)                     \
  scalar palette0r, palette0g, palette0b;       \
  scalar palette1r, palette1g, palette1b;       \
  scalar palette2r, palette2g, palette2b;       \
  scalar palette3r, palette3g, palette3b;
