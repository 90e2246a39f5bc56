#pragma once
// A host's connection to the library: the server libraries, and a project made by its class name.

#include "KVProjectData/IKVFileService.h"
#include "KVProjectData/IKVProjectArchive.h"
#include "KVProjectData/IKVProjectData.h"
#include "platform/com/ComPtr.h"

#include <string>

namespace kvproject {

/// The full paths of the server libraries that belong to this program.
std::string ProjectLibrary();
std::string EngineLibrary();

/// Registers both libraries in the registry in use, or takes them out of it: both or neither. Throws Failure.
void Register();
void Unregister();

/// Registers the libraries for this process alone, in memory.
void RegisterForThisProcess();

/// The same, with all importers: those of these libraries and those that the user's registry file names.
void RegisterImporters();

class Session {
public:
    /// Creates an empty project and a file service. Throws Failure.
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    IKVProjectData& Project() const { return *m_project; }

    /// Throws Failure with the place and the reason for a file that does not parse.
    void Load(const std::string& file);
    void Save(const std::string& file);

    /// Archives the project as a file, or tells what would be done. What the events give up returns their result.
    HRESULT Archive(const std::string& file, bool planned, IKVArchiveEvents& events) const;

    /// What a path of the file stands for on this machine.
    kv::Bstr Resolved(std::string_view path) const;

    /// A document of the project as it is now, as saving writes it.
    kv::ComPtr<IXMLDOMDocument> Document() const;

private:
    kv::ComPtr<IKVProjectData> m_project;
    kv::ComPtr<IKVFileService> m_files;
};

/// Tells where a file is no well-formed document: "line 3, position 7: reason". Empty for one that is.
std::string ParseFailure(const std::string& file);

} // namespace kvproject
