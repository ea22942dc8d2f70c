// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

// Whether this is a build with sanitizers, which needs many times the time and memory.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TAVO_THREAD_SANITIZER 1
#endif
#if __has_feature(address_sanitizer)
#define TAVO_ADDRESS_SANITIZER 1
#endif
#endif
#if defined(__SANITIZE_THREAD__) && !defined(TAVO_THREAD_SANITIZER)
#define TAVO_THREAD_SANITIZER 1
#endif
#if defined(__SANITIZE_ADDRESS__) && !defined(TAVO_ADDRESS_SANITIZER)
#define TAVO_ADDRESS_SANITIZER 1
#endif

#ifdef TAVO_THREAD_SANITIZER
constexpr bool threadSanitized = true;
#else
constexpr bool threadSanitized = false;
#endif

#if defined(TAVO_THREAD_SANITIZER) || defined(TAVO_ADDRESS_SANITIZER)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

/// Whether the tested code is built with UBSan, which reads an object's type through a pipe, so that an invalid
/// pointer does no harm. Where no pipe can be opened, it reports every object as being of a wrong type.
#ifdef TAVO_UNDEFINED_BEHAVIOUR_SANITIZER
constexpr bool typesAreCheckedThroughAPipe = true;
#else
constexpr bool typesAreCheckedThroughAPipe = false;
#endif

/// For a test's own definition of a function of the C library that tells the time: a sanitizer's runtime calls it
/// before its own functions work.
#ifdef __clang__
#define TAVO_NO_SANITIZER __attribute__((disable_sanitizer_instrumentation))
#else
#define TAVO_NO_SANITIZER
#endif
