#include "Sample.h"

namespace {

constexpr const kv::EnumDescription* kEnums[]{&kv::kEnumDescription<SampleColour>};
constexpr const kv::RecordDescription* kRecords[]{&kv::kRecordDescription<SamplePoint>};
constexpr const kv::InterfaceDescription* kInterfaces[]{
    &kv::kInterfaceDescription<ISample>,        &kv::kInterfaceDescription<IPrism>,
    &kv::kInterfaceDescription<IShape>,         &kv::kInterfaceDescription<IPlainSample>,
    &kv::kInterfaceDescription<_ISampleEvents>,
};
constexpr kv::ClassDescription kClasses[]{{"Sample", &kSampleClass, "ISample", "_ISampleEvents"},
                                          {"Silent", &kSilentClass, "IPlainSample", {}}};
constexpr kv::LibraryDescription kLibrary{.name = "SampleLib",
                                          .help = "Sample 2.7 Type Library",
                                          .libid = &kSampleLibrary,
                                          .major = 2,
                                          .minor = 7,
                                          .locale = 1033,
                                          .enums = kEnums,
                                          .records = kRecords,
                                          .interfaces = kInterfaces,
                                          .classes = kClasses};

} // namespace

namespace kv {

const LibraryDescription* ModuleTypeLibrary()
{
    return &kLibrary;
}

} // namespace kv

const kv::LibraryDescription& SampleLibrary()
{
    return kLibrary;
}
