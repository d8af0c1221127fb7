#pragma once

#include <glib-object.h>
#include <memory>

namespace vardel::linux_desktop {

// Owners of what GLib-based libraries hand over: each handle gives its object back with the function
// that belongs to it, so that no release is paired by hand.
template<auto release> struct GLibRelease {
    template<typename T> void operator()(T* object) const { release(object); }
};

template<typename T> using GObjectHandle = std::unique_ptr<T, GLibRelease<g_object_unref>>;
using GErrorHandle = std::unique_ptr<GError, GLibRelease<g_error_free>>;
using GArrayHandle = std::unique_ptr<GArray, GLibRelease<g_array_unref>>;
using GHashTableHandle = std::unique_ptr<GHashTable, GLibRelease<g_hash_table_unref>>;
using GVariantHandle = std::unique_ptr<GVariant, GLibRelease<g_variant_unref>>;
using GVariantIterHandle = std::unique_ptr<GVariantIter, GLibRelease<g_variant_iter_free>>;
using GKeyFileHandle = std::unique_ptr<GKeyFile, GLibRelease<g_key_file_free>>;

// A list of objects that owns both the list and every object in it.
struct GObjectListRelease {
    void operator()(GList* list) const { g_list_free_full(list, g_object_unref); }
};
using GObjectListHandle = std::unique_ptr<GList, GObjectListRelease>;
// Strings and plain structures from g_malloc.
template<typename T> using GMallocHandle = std::unique_ptr<T, GLibRelease<g_free>>;

} // namespace vardel::linux_desktop
