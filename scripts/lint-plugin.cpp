// A plugin of clang-tidy: its checks match the project's own declarations alone.
//
// Without it, each check walks all that the headers of the system declare, for every source, and
// then shows nothing of it. The static analyzer is not concerned: it starts from a source's
// functions.
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
    for (clang::Decl* const declaration : context.getTranslationUnitDecl()->decls()) {
      clang::SourceLocation const at = declaration->getLocation();
      if (at.isValid() && !sources.isInSystemHeader(at)) own.push_back(declaration);
    }
    context.setTraversalScope(own);
  }
};

/// Runs before what clang-tidy does with the same source.
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
