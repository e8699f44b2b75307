# Tables of attributes that must not compile.
velmor_case(AttributeTable AttributeCases.cpp 1 AMisspeltAttribute "no member named.*ident")
velmor_case(AttributeTable AttributeCases.cpp 2 AnAttributeWithoutWriter "no member named.*idIs")
velmor_case(AttributeTable AttributeCases.cpp 3 AMissingRow theLastNumberIsNotTheOneThatIsStated)
velmor_case(AttributeTable AttributeCases.cpp 4 AMisspeltOperation "isLrge")
velmor_case(AttributeTable AttributeCases.cpp 5 AScalarAsAQueue "no member named.*hitsEnq")
velmor_case(AttributeTable AttributeCases.cpp 6 ATypeThatIsNotDescribed "typeDescriptor")
