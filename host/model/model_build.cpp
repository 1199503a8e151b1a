#include "host/model/model_build.h"

#include "host/text.h"

namespace studystats {

ModelData modelOf(Model::Kind kind, const UsedData& used, const std::vector<std::size_t>& chosen, double level) {
  ModelData data;
  data.kind = kind;
  data.version = version();
  data.table = used.table;
  data.rows = used.rows.size();
  data.level = level;
  data.rowNameColumn = used.idColumn;
  for (const std::size_t j : chosen)
    data.descriptors.push_back({used.descriptors[j], used.recipes[j], used.shift[j], used.scale[j]});
  return data;
}

Model sealed(ModelData data) {
  complete(data);
  return Model(std::make_shared<const ModelData>(std::move(data)));
}

}  // namespace studystats
