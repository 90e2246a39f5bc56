// The smallest host: makes a project by its class name, edits it, hears of it, and saves it.

#include <KVProjectData/KVProjectData.h>
#include <platform/com/Activation.h>
#include <platform/system/Registry.h>

#include <iostream>

using namespace kv;

int main()
{
    // Registered for this process alone; a registered installation needs only CoCreateInstance.
    Registry::UseMemory();
    for (const char* server : {KV_SERVER_DIR "/libKVProjectData.so", KV_SERVER_DIR "/libKVEngine.so"}) {
        if (FAILED(RegisterServer(ToUtf16(server)))) return 1;
    }

    CLSID clsid{};
    ComPtr<IKVProjectData> project;
    ComPtr<IKVFileService> files;
    if (FAILED(CLSIDFromProgID(PROGID_KVProjectData, &clsid)) || FAILED(CreateInstance(clsid, project))) return 1;
    if (FAILED(CLSIDFromProgID(PROGID_KVFileService, &clsid)) || FAILED(CreateInstance(clsid, files))) return 1;

    ComPtr<IKVTitle> title;
    if (FAILED(project->put_Label(Bstr(u"Holiday").Get())) || FAILED(project->AddTitle(0, title.Put()))) return 1;
    if (FAILED(title->put_Label(Bstr(u"The beach").Get()))) return 1;
    if (FAILED(files->SaveProject(Bstr(u"Holiday.xml").Get(), project.Get()))) return 1;

    Bstr label;
    LONG titles = 0;
    if (FAILED(files->LoadProject(Bstr(u"Holiday.xml").Get(), project.Get()))) return 1;
    if (FAILED(project->get_Label(label.Put())) || FAILED(project->get_TitleCount(&titles))) return 1;
    std::cout << ToUtf8(label.View()) << ": " << titles << " title\n";
    return titles == 1 ? 0 : 1;
}
