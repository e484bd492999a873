#pragma once

/// Marks what liborlohost.so exports.
#define ORLOHOST_API __attribute__((visibility("default")))
