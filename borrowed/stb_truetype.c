/* stb_truetype, compiled once and as C. */
#define STB_TRUETYPE_IMPLEMENTATION
#include <stb/stb_truetype.h>
