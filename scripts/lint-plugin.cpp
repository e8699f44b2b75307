// A plugin for clang-tidy. With it, the checks match only the project's own declarations.
//
// Without it, each check also visits all declarations of the system headers, for every source, and
// then drops its findings there. The static analyzer works the same with and without the plugin: it
// starts from the functions of the source.
#include <memory>
#include <string>
#include <vector>

#include "clang/AST/ASTConsumer.h"
#include "clang/AST/ASTContext.h"
#include "clang/Basic/SourceManager.h"
#include "clang/Frontend/FrontendAction.h"
#include "clang/Frontend/FrontendPluginRegistry.h"

namespace {

class OwnDeclarations : public clang::ASTConsumer {
 public:
  void HandleTranslationUnit(clang::ASTContext& context) override {
    const clang::SourceManager& sources = context.getSourceManager();
    std::vector<clang::Decl*> own;
    for (clang::Decl* const declaration : context.getTranslationUnitDecl()->noload_decls()) {
      clang::SourceLocation const at = declaration->getLocation();
      if (at.isValid() && !sources.isInSystemHeader(at)) own.push_back(declaration);
    }
    context.setTraversalScope(own);
  }
};

/// Runs before the checks of clang-tidy.
class Action : public clang::PluginASTAction {
 protected:
  std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance&,
                                                        llvm::StringRef) override {
    return std::make_unique<OwnDeclarations>();
  }
  bool ParseArgs(const clang::CompilerInstance&, const std::vector<std::string>&) override {
    return true;
  }
  ActionType getActionType() override { return AddBeforeMainAction; }
};

clang::FrontendPluginRegistry::Add<Action> const action(
    "own-declarations", "matches the project's own declarations alone");

}  // namespace
