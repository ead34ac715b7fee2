// Heads every type descriptor; part of the runtime library that these programs go without. Compiled without
// run-time type information.

class type_info {
public:
  type_info();
  virtual ~type_info();
};

type_info::type_info() {}
type_info::~type_info() {}
