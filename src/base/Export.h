#pragma once

/// Marks what applications may use. Everything else stays inside `libzelvar-core` and `libzelvar`, which are built with
/// hidden visibility. One macro serves both libraries: the platforms we run on do not tell import from export.
#define ZELVAR_API __attribute__((visibility("default")))
