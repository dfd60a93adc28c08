#include "exchange/JsonFormat.h"
namespace tavlin { Imported importJson(std::string_view) { return {}; } }
