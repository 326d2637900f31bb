#include "Categories.h"

#import <Foundation/Foundation.h>
#include <dlfcn.h>
#include <objc/runtime.h>

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

namespace {

std::string libraryOf(const void *address)
{
    Dl_info info;
    if (!dladdr(address, &info))
        return "";
    const std::string path = info.dli_fname;
    return path.substr(path.rfind('/') + 1);
}

using Implementations =
    std::map<std::string, std::vector<std::string>>;  // selector to the libraries that implement it

Implementations implementations(Class place)
{
    Implementations found;
    unsigned count = 0;
    Method *methods = class_copyMethodList(place, &count);
    for (unsigned i = 0; i < count; ++i)
        found[sel_getName(method_getName(methods[i]))].push_back(
            libraryOf(reinterpret_cast<const void *>(method_getImplementation(methods[i]))));
    free(methods);
    return found;
}

}  // namespace

std::set<std::string> methodsReplacedBy(const std::string &library)
{
    const int count = objc_getClassList(nullptr, 0);
    const std::unique_ptr<Class[]> classes(new Class[size_t(count)]);
    objc_getClassList(classes.get(), count);
    std::map<Class, Implementations> all;
    for (int i = 0; i < count; ++i) {
        all.emplace(classes[size_t(i)], implementations(classes[size_t(i)]));
        Class meta = object_getClass((id)classes[size_t(i)]);
        all.emplace(meta, implementations(meta));
    }

    auto isOurs = [&](const std::string &name) { return name.find(library) != std::string::npos; };
    std::set<std::string> replaced;
    // A class's own methods, then those of each class above: a clash is told of the one of the two that is ours.
    for (const auto &[place, own] : all) {
        for (Class above = place; above; above = class_getSuperclass(above)) {
            for (const auto &[selector, here] : own) {
                const auto there = all[above].find(selector);
                if (there == all[above].end())
                    continue;
                for (Class owner : {place, above}) {
                    const auto &owners = owner == place ? here : there->second;
                    const auto &others = owner == place ? there->second : here;
                    if (std::any_of(owners.begin(), owners.end(), isOurs) &&
                        !std::all_of(others.begin(), others.end(), isOurs) &&
                        !isOurs(libraryOf((const void *)owner)))
                        replaced.insert(std::string(class_isMetaClass(owner) ? "+[" : "-[") +
                                        class_getName(owner) + " " + selector + "]");
                }
            }
        }
    }
    return replaced;
}
