# Tables of attributes that must not compile. See FormatCases.cmake.
function(velmor_attribute_case number name reason)
  set(compile ${CMAKE_CXX_COMPILER} -std=c++20 -fsyntax-only -I${PROJECT_SOURCE_DIR}/platform
    -DCASE=${number})
  set(source ${CMAKE_CURRENT_SOURCE_DIR}/compile_fail/AttributeCases.cpp)
  add_test(NAME AttributeTableRefuses.${name} COMMAND ${compile} ${source})
  set_tests_properties(AttributeTableRefuses.${name} PROPERTIES PASS_REGULAR_EXPRESSION "${reason}")
  add_test(NAME AttributeTableTakes.${name} COMMAND ${compile} -DRIGHT ${source})
endfunction()

velmor_attribute_case(1 AMisspeltAttribute "no member named.*ident")
velmor_attribute_case(2 AnAttributeWithoutWriter "no member named.*idIs")
velmor_attribute_case(3 AMissingRow theLastNumberIsNotTheOneThatIsStated)
velmor_attribute_case(4 AMisspeltOperation "isLrge")
velmor_attribute_case(5 AScalarAsAQueue "no member named.*hitsEnq")
velmor_attribute_case(6 ATypeThatIsNotDescribed "typeDescriptor")
