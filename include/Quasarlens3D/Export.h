/// @file
/// Marks what the shared library exports.
#ifndef QUASARLENS3D_EXPORT_H
#define QUASARLENS3D_EXPORT_H

#define QUASARLENS3D_API __attribute__((visibility("default")))

#endif
