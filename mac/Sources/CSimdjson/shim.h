#include <simdjson.h>
